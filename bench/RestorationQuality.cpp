// Restoration quality on material this program makes (a fixed seed, printed): music-like notes with
// synthetic clicks at 2, 10 and 50 per second, and crackle. Tindle at its defaults against FFmpeg's
// adeclick at its defaults, on the same damaged signal in the same run.
//
//   SNR before / after   the clean signal against the damaged one, and against the restored one
//   SNR undamaged        the same, only over samples 2 ms or more from any damage: what the
//                        restorer harmed that was never broken
//   clicks -10 dB        the share of clicks whose error energy (click +- 1 ms) fell by 10 dB or more

#include "engine/Tindler.h"
#include "support/EngineRun.h"
#include "support/Material.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <sys/resource.h>
#include <sys/time.h>
#include <unistd.h>
#include <vector>

using namespace velmar::audio;

namespace
{
constexpr double rate = 44100.0;
constexpr std::int32_t seconds = 20;

struct Metrics
{
    double snrAfter = 0.0;
    double snrUndamaged = 0.0;
    double clicksFixed = 0.0;
};

double ratioDb(double signal, double noise)
{
    return 10.0 * std::log10(signal / std::max(noise, 1e-30));
}

double childCpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) * 1e-6;
}

/** FFmpeg's adeclick at its defaults, through raw interleaved floats; empty if ffmpeg fails. */
Signal32 adeclick(const Signal32& input, double& cpuSeconds)
{
    const std::string dir = "/tmp/tindle-bench-" + std::to_string(getpid());
    const std::string in = dir + "-in.raw";
    const std::string out = dir + "-out.raw";
    const std::int32_t channels = input.channelCount();
    {
        std::vector<float> interleaved(static_cast<std::size_t>(input.length() * channels));
        for (std::int32_t i = 0; i < input.length(); ++i)
            for (std::int32_t c = 0; c < channels; ++c)
                interleaved[static_cast<std::size_t>(i * channels + c)] = input.channel(c)[i];
        std::ofstream(in, std::ios::binary)
            .write(reinterpret_cast<const char*>(interleaved.data()),
                   static_cast<std::streamsize>(interleaved.size() * sizeof(float)));
    }
    const std::string command = "ffmpeg -nostdin -hide_banner -loglevel error -y -f f32le -ar 44100 -ac " +
                                std::to_string(channels) + " -i " + in + " -af adeclick -f f32le " + out;
    const double before = childCpuSeconds();
    const int status = std::system(command.c_str());
    cpuSeconds = childCpuSeconds() - before;
    std::remove(in.c_str());
    Signal32 result;
    if (status == 0)
    {
        std::ifstream file(out, std::ios::binary);
        std::vector<float> interleaved(static_cast<std::size_t>(input.length() * channels), 0.0f);
        file.read(reinterpret_cast<char*>(interleaved.data()),
                  static_cast<std::streamsize>(interleaved.size() * sizeof(float)));
        result = Signal32(channels, input.length());
        for (std::int32_t i = 0; i < input.length(); ++i)
            for (std::int32_t c = 0; c < channels; ++c)
                result.channel(c)[i] = interleaved[static_cast<std::size_t>(i * channels + c)];
    }
    std::remove(out.c_str());
    return result;
}

Metrics measure(const Signal32& clean, const Signal32& restored, const Signal32& damaged,
                const std::vector<tindle::test::DamageEvent>& clicks,
                const std::vector<std::vector<bool>>& undamaged)
{
    Metrics m;
    double signal = 0.0;
    double error = 0.0;
    double signalUndamaged = 0.0;
    double errorUndamaged = 0.0;
    for (std::int32_t c = 0; c < clean.channelCount(); ++c)
        for (std::int32_t i = 0; i < clean.length(); ++i)
        {
            const double x = clean.channel(c)[i];
            const double e = restored.channel(c)[i] - x;
            signal += x * x;
            error += e * e;
            if (undamaged[static_cast<std::size_t>(c)][static_cast<std::size_t>(i)])
            {
                signalUndamaged += x * x;
                errorUndamaged += e * e;
            }
        }
    m.snrAfter = ratioDb(signal, error);
    m.snrUndamaged = ratioDb(signalUndamaged, errorUndamaged);

    const auto margin = static_cast<std::int32_t>(rate / 1000.0);
    int fixed = 0;
    for (const auto& click : clicks)
    {
        double before = 0.0;
        double after = 0.0;
        const std::int32_t from = std::max(0, click.position - margin);
        const std::int32_t to = std::min(clean.length(), click.position + click.width + margin);
        for (std::int32_t i = from; i < to; ++i)
        {
            const double x = clean.channel(click.channel)[i];
            before += std::pow(damaged.channel(click.channel)[i] - x, 2.0);
            after += std::pow(restored.channel(click.channel)[i] - x, 2.0);
        }
        fixed += after * 10.0 <= before ? 1 : 0;
    }
    m.clicksFixed = clicks.empty() ? 0.0 : 100.0 * fixed / static_cast<double>(clicks.size());
    return m;
}
} // namespace

int main()
{
    const std::uint32_t seed = 20261122u;
    std::printf("Restoration quality: %d s of stereo music-like material at 44.1 kHz per row, seed %u,\n"
                "clicks 0.05-4 ms wide, 0.05-0.8 high (noise bursts and ringing), plus crackle at 300/s.\n\n",
                seconds, seed);
    std::printf("%-8s %-10s %10s %10s %14s %14s\n", "clicks/s", "restorer", "SNR before", "SNR after",
                "SNR undamaged", "clicks -10 dB");
    bool ffmpegMissing = false;
    for (const double clicksPerSecond : {2.0, 10.0, 50.0})
    {
        std::mt19937 rng(seed + static_cast<std::uint32_t>(clicksPerSecond));
        const Signal32 clean =
            tindle::test::musicLike(rng, 2, seconds * static_cast<std::int32_t>(rate), rate, 0.3f);
        Signal32 damaged = clean.clone();
        const auto clicks = tindle::test::addRandomClicks(damaged, rng, clicksPerSecond, rate);
        const auto crackle = tindle::test::addCrackle(damaged, rng, 300.0, rate);

        std::vector<std::vector<bool>> undamaged(
            2, std::vector<bool>(static_cast<std::size_t>(clean.length()), true));
        const auto reach = static_cast<std::int32_t>(0.002 * rate);
        for (const auto* list : {&clicks, &crackle})
            for (const auto& e : *list)
                for (std::int32_t i = std::max(0, e.position - reach);
                     i < std::min(clean.length(), e.position + e.width + reach); ++i)
                    undamaged[static_cast<std::size_t>(e.channel)][static_cast<std::size_t>(i)] = false;

        double signal = 0.0;
        double noise = 0.0;
        for (std::int32_t c = 0; c < 2; ++c)
            for (std::int32_t i = 0; i < clean.length(); ++i)
            {
                signal += std::pow(clean.channel(c)[i], 2.0);
                noise += std::pow(damaged.channel(c)[i] - clean.channel(c)[i], 2.0);
            }
        const double snrBefore = ratioDb(signal, noise);

        Tindler tindler;
        tindler.setUp(2, rate);
        tindler.reset();
        const Signal32 restored = tindle::test::processWhole(tindler, damaged, 512);
        const Metrics t = measure(clean, restored, damaged, clicks, undamaged);
        std::printf("%-8.0f %-10s %10.2f %10.2f %14.2f %13.1f%%\n", clicksPerSecond, "Tindle", snrBefore,
                    t.snrAfter, t.snrUndamaged, t.clicksFixed);

        double cpu = 0.0;
        const Signal32 ffmpeg = adeclick(damaged, cpu);
        if (ffmpeg.isEmpty())
        {
            ffmpegMissing = true;
            std::printf("%-8.0f %-10s %10s\n", clicksPerSecond, "adeclick", "(ffmpeg failed)");
            continue;
        }
        const Metrics f = measure(clean, ffmpeg, damaged, clicks, undamaged);
        std::printf("%-8.0f %-10s %10.2f %10.2f %14.2f %13.1f%%\n", clicksPerSecond, "adeclick", snrBefore,
                    f.snrAfter, f.snrUndamaged, f.clicksFixed);
    }
    return ffmpegMissing ? 1 : 0;
}
