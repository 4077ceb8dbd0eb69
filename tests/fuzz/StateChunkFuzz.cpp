// Arbitrary bytes as a saved state: the loader takes them on a prepared processor, then audio with
// clicks and crackle runs through whatever settings they left. Nothing may crash, read out of
// bounds, overflow or leave the output non-finite, and the state saved afterwards is the whole
// chunk again.

#include "shell/TindleAudioProcessor.h"
#include "support/Render.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace
{
// At 32 kHz a frame is 2048 samples with a hop of 896: two blocks of 2048 run three frames under
// the loaded settings, which is what an input costs; the frames' arithmetic dominates the time.
constexpr double rate = 32000.0;
constexpr int blocks = 2;
constexpr int blockLength = 2048;

struct Fixture
{
    juce::ScopedJuceInitialiser_GUI juce;
    std::unique_ptr<juce::AudioProcessor> processor{createPluginFilter()};
    juce::MemoryBlock defaults;
    juce::AudioBuffer<float> audio{2, blockLength};

    Fixture()
    {
        if (!tindle::test::prepare(*processor, 2, rate, blockLength))
            std::abort();
        processor->getStateInformation(defaults);
    }
};

Fixture& fixture()
{
    static Fixture f;
    return f;
}

void fail(const char* what)
{
    std::fprintf(stderr, "state chunk fuzz: %s\n", what);
    std::abort();
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    auto& f = fixture();
    auto& processor = *f.processor;
    // Every input starts from the saved defaults, so that a finding replays on its own.
    processor.setStateInformation(f.defaults.getData(), static_cast<int>(f.defaults.getSize()));
    processor.reset();
    processor.setStateInformation(data, static_cast<int>(size));

    juce::MidiBuffer midi;
    for (int block = 0; block < blocks; ++block)
    {
        for (int c = 0; c < 2; ++c)
        {
            float* samples = f.audio.getWritePointer(c);
            for (int i = 0; i < blockLength; ++i)
            {
                const int n = block * blockLength + i;
                // A quiet tone, a click every 700 samples and a crackle tick every 97.
                samples[i] = 0.2f * std::sin(0.031f * static_cast<float>(n + 17 * c)) +
                             (n % 700 == 350 ? 0.8f : 0.0f) + (n % 97 == 13 ? 0.05f : 0.0f);
            }
        }
        processor.processBlock(f.audio, midi);
        for (int c = 0; c < 2; ++c)
            for (int i = 0; i < blockLength; ++i)
                if (!std::isfinite(f.audio.getSample(c, i)))
                    fail("non-finite output for finite input");
    }

    juce::MemoryBlock saved;
    processor.getStateInformation(saved);
    if (saved.getSize() != f.defaults.getSize())
        fail("the saved state changed its length");
    return 0;
}
