// The audio path's time as a host sees it, and where a frame's time goes.
//
//   processBlock at 64-sample blocks, 44.1 kHz stereo, damaged music at default settings: the
//   worst and the 99.9th-percentile block as a share of the block's period (1.45 ms), which is
//   what decides whether a host's audio thread keeps up, by the wall clock and by the thread's
//   own CPU time;
//   per stage, the time per frame of the restoration chain, run stage by stage on the same frames.

#include "engine/LinearPrediction.h"
#include "engine/Tindler.h"
#include "shell/TindleAudioProcessor.h"
#include "support/Material.h"
#include "toolkit/SignalMaths.h"
#include "toolkit/VectorLibrary.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <memory>
#include <vector>

using velmar::audio::Signal32;
using velmar::audio::Tindler;
using Clock = std::chrono::steady_clock;

namespace
{
constexpr double rate = 44100.0;

Signal32 damagedMusic(int seconds)
{
    std::mt19937 rng(20261122u);
    Signal32 s = tindle::test::musicLike(rng, 2, seconds * static_cast<int>(rate), rate, 0.3f);
    tindle::test::addRandomClicks(s, rng, 10.0, rate);
    tindle::test::addCrackle(s, rng, 300.0, rate);
    return s;
}

double microseconds(Clock::duration d)
{
    return std::chrono::duration<double, std::micro>(d).count();
}

// The calling thread's CPU time: unlike the wall clock it stops while the thread is preempted or
// its virtual processor is descheduled, which on a shared machine hides the plug-in's own time.
Clock::duration threadCpuTime()
{
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return std::chrono::seconds(t.tv_sec) + std::chrono::nanoseconds(t.tv_nsec);
}

void printSpread(const char* what, std::vector<double>& times, double period)
{
    std::sort(times.begin(), times.end());
    const double worst = times.back();
    const double p999 = times[static_cast<std::size_t>(0.999 * static_cast<double>(times.size() - 1))];
    std::printf("  %-10s worst %7.1f us = %6.1f %%, 99.9th percentile %6.1f us = %5.1f %% of the period\n",
                what, worst, 100.0 * worst / period, p999, 100.0 * p999 / period);
}

void blockTimes(const Signal32& music)
{
    constexpr int block = 64;
    std::unique_ptr<juce::AudioProcessor> processor(createPluginFilter());
    juce::AudioProcessor::BusesLayout layout;
    layout.inputBuses.add(juce::AudioChannelSet::stereo());
    layout.outputBuses.add(juce::AudioChannelSet::stereo());
    processor->setBusesLayout(layout);
    processor->prepareToPlay(rate, block);
    juce::AudioBuffer<float> buffer(2, block);
    juce::MidiBuffer midi;
    std::vector<double> wall;
    std::vector<double> cpu;
    // The first second is left out of the figures: a host's first blocks run on a cold cache.
    const int settled = static_cast<int>(rate);
    for (int position = 0; position + block <= music.length(); position += block)
    {
        for (int c = 0; c < 2; ++c)
            buffer.copyFrom(c, 0, music.channel(c) + position, block);
        const auto cpuStart = threadCpuTime();
        const auto start = Clock::now();
        processor->processBlock(buffer, midi);
        const auto end = Clock::now();
        const auto cpuEnd = threadCpuTime();
        if (position >= settled)
        {
            wall.push_back(microseconds(end - start));
            cpu.push_back(microseconds(cpuEnd - cpuStart));
        }
    }
    const double period = 1e6 * block / rate;
    std::printf(
        "processBlock, 64-sample blocks (period %.0f us, target: worst below 10 %%), 44.1 kHz stereo, "
        "%zu blocks:\n",
        period, wall.size());
    printSpread("wall clock", wall, period);
    printSpread("thread CPU", cpu, period);
}

void stageTimes(const Signal32& music)
{
    Tindler t;
    t.setUp(2, rate);
    t.reset();
    const int n = t.getFrameLength();
    const Signal32 window = [&]
    {
        const Signal32 w = velmar::audio::hammingWindow(n);
        Signal32 both(2, n);
        for (int c = 0; c < 2; ++c)
            std::copy_n(w.channel(0), n, both.channel(c));
        return both;
    }();
    // Each frame runs several times and keeps its quickest time per stage: on a shared machine a
    // single run's sum carries whatever else the processor did meanwhile.
    constexpr int passes = 3;
    const int frameCount = (music.length() - n) / t.getHop() + 1;
    std::vector<std::array<Clock::duration, 4>> quickest(
        static_cast<std::size_t>(frameCount),
        {Clock::duration::max(), Clock::duration::max(), Clock::duration::max(), Clock::duration::max()});
    velmar::audio::ClickList clicks;
    velmar::audio::CrackleList crackles;
    velmar::audio::ChannelLevels levels;
    velmar::audio::ChannelPositions repairEnd;
    velmar::audio::KeptLags kept;
    kept.prepare(2, 25);
    // The chain of one frame, stage by stage, on frames one hop apart.
    for (int pass = 0; pass < passes; ++pass)
        for (int index = 0; index < frameCount; ++index)
        {
            const Signal32 frame = music.slice(index * t.getHop(), n);
            clicks.clear();
            crackles.clear();
            auto a = Clock::now();
            const Signal32 shortPredictor = velmar::audio::linearPrediction(frame * window, 24, kept);
            auto b = Clock::now();
            t.detect(frame, shortPredictor, clicks, crackles, levels, repairEnd);
            auto c = Clock::now();
            const Signal32 firstPass = Tindler::repairClicks(frame, shortPredictor, clicks);
            auto d = Clock::now();
            Tindler::keepLagsOfUntouchedChannels(kept, clicks);
            const Signal32 longPredictor = velmar::audio::linearPrediction(firstPass * window, 240, kept);
            auto e = Clock::now();
            const Signal32 repaired = Tindler::repairClicks(frame, longPredictor, clicks);
            auto f = Clock::now();
            const Signal32 result = t.reduceCrackle(repaired, crackles, levels);
            auto g = Clock::now();
            const std::array<Clock::duration, 4> times{(b - a) + (e - d), c - b, (d - c) + (f - e), g - f};
            auto& best = quickest[static_cast<std::size_t>(index)];
            for (std::size_t s = 0; s < 4; ++s)
                best[s] = std::min(best[s], times[s]);
        }
    Clock::duration prediction{};
    Clock::duration detection{};
    Clock::duration repair{};
    Clock::duration crackle{};
    Clock::duration slowest{};
    std::array<Clock::duration, 4> slowestStages{};
    for (const auto& best : quickest)
    {
        if (best[0] + best[1] + best[2] + best[3] > slowest)
        {
            slowest = best[0] + best[1] + best[2] + best[3];
            slowestStages = best;
        }
        prediction += best[0];
        detection += best[1];
        repair += best[2];
        crackle += best[3];
    }
    const int frames = frameCount;
    const auto perFrame = [&](Clock::duration d) { return microseconds(d) / frames; };
    const double total = perFrame(prediction + detection + repair + crackle);
    std::printf(
        "Time per stereo frame of 2048 samples (hop 642) at 44.1 kHz, %d frames, quickest of %d runs:\n",
        frames, passes);
    std::printf("  prediction (24 and 240 coefficients) %7.1f us\n", perFrame(prediction));
    std::printf("  detection                            %7.1f us\n", perFrame(detection));
    std::printf("  repair (both passes)                 %7.1f us\n", perFrame(repair));
    std::printf("  crackle                              %7.1f us\n", perFrame(crackle));
    std::printf("  all                                  %7.1f us = %.0fx real time\n", total,
                1e6 * t.getHop() / rate / total);
    std::printf("  slowest frame                        %7.1f us = %.1f %% of a 64-sample block's period\n"
                "    (prediction %.1f, detection %.1f, repair %.1f, crackle %.1f us)\n",
                microseconds(slowest), 100.0 * microseconds(slowest) * rate / 64e6,
                microseconds(slowestStages[0]), microseconds(slowestStages[1]),
                microseconds(slowestStages[2]), microseconds(slowestStages[3]));
}
} // namespace

int main()
{
    velmar::audio::startUpVectorLibrary();
    const Signal32 music = damagedMusic(60);
    blockTimes(music);
    stageTimes(music);
    return 0;
}
