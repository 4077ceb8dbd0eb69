// Makes the bundled example recording: music-like notes with a little hiss, damaged by clicks
// (five a second, noise bursts and ringing, 0.05 to 4 ms) and crackle (200 ticks a second per
// channel), written as 16-bit stereo FLAC at 44.1 kHz. The seed is fixed, so the file comes out
// the same each time:  tindle-make-example examples/damaged-example.flac [SECONDS]

#include "support/Material.h"

#include <juce_audio_formats/juce_audio_formats.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <random>

int main(int argc, char** argv)
{
    if (argc != 2 && argc != 3)
    {
        std::fprintf(stderr, "usage: tindle-make-example OUTPUT.flac [SECONDS]\n");
        return 2;
    }
    constexpr double rate = 44100.0;
    const std::int32_t seconds = argc == 3 ? std::max(1, std::atoi(argv[2])) : 15;
    std::mt19937 rng(20261122u);
    auto signal = tindle::test::musicLike(rng, 2, seconds * static_cast<std::int32_t>(rate), rate, 0.35f);
    // Surface hiss at about -66 dB, as under a clean record.
    std::normal_distribution<float> hiss(0.0f, 0.0005f);
    for (std::int32_t c = 0; c < 2; ++c)
        for (std::int32_t i = 0; i < signal.length(); ++i)
            signal.channel(c)[i] += hiss(rng);
    const auto clicks = tindle::test::addRandomClicks(signal, rng, 5.0, rate);
    const auto crackle = tindle::test::addCrackle(signal, rng, 200.0, rate);

    const juce::File file = juce::File::getCurrentWorkingDirectory().getChildFile(argv[1]);
    file.deleteFile();
    std::unique_ptr<juce::AudioFormatWriter> writer(
        juce::FlacAudioFormat().createWriterFor(new juce::FileOutputStream(file), rate, 2, 16, {}, 5));
    if (writer == nullptr)
    {
        std::fprintf(stderr, "cannot write %s\n", argv[1]);
        return 1;
    }
    const float* channels[] = {signal.channel(0), signal.channel(1)};
    writer->writeFromFloatArrays(channels, 2, signal.length());
    std::printf("%s: %d s, %zu clicks, %zu crackle ticks\n", argv[1], seconds, clicks.size(), crackle.size());
    return 0;
}
