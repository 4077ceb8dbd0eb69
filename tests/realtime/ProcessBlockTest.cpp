// processBlock after prepareToPlay and a warm-up: no heap allocation and no system call, at every
// sample rate, mono and stereo, block sizes from 1 to 4096, with clicks and crackle being found.

#include "engine/Tindler.h"
#include "realtime/CountingAllocator.h"
#include "realtime/SystemCallTrap.h"
#include "shell/TindleAudioProcessor.h"
#include "support/Material.h"
#include "support/Render.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>

using velmar::audio::Tindler;

namespace
{
struct Measured
{
    long allocations = -1;
    int systemCalls = -1;
    int lastSystemCall = -1;
    bool trapped = false;
};

/** Damaged music: clicks at 20 a second and crackle, as interleaved blocks are cut from it. */
tindle::test::Channels damagedMusic(int channels, double rate, int length)
{
    std::mt19937 rng(static_cast<std::uint32_t>(rate) + static_cast<std::uint32_t>(channels));
    velmar::audio::Signal32 s = tindle::test::musicLike(rng, channels, length, rate, 0.3f);
    tindle::test::addRandomClicks(s, rng, 20.0, rate);
    tindle::test::addCrackle(s, rng, 300.0, rate);
    tindle::test::Channels out;
    for (int c = 0; c < channels; ++c)
        out.emplace_back(s.channel(c), s.channel(c) + length);
    return out;
}

/** Runs the blocks of input from first to last in blocks of size through processor. */
void run(juce::AudioProcessor& processor, const tindle::test::Channels& input, int first, int last, int size,
         juce::AudioBuffer<float>& buffer)
{
    juce::MidiBuffer midi;
    for (int position = first; position + size <= last; position += size)
    {
        for (int c = 0; c < buffer.getNumChannels(); ++c)
            buffer.copyFrom(c, 0, input[static_cast<std::size_t>(c)].data() + position, size);
        processor.processBlock(buffer, midi);
    }
}

/** Prepares for prepared, warms up and measures blocks of size, all on a thread of its own that
    ends trapped. */
Measured measure(juce::AudioProcessor& processor, const tindle::test::Channels& input, double rate,
                 int prepared, int size)
{
    Measured m;
    std::thread audio(
        [&]
        {
            const auto channels = static_cast<int>(input.size());
            const auto length = static_cast<int>(input[0].size());
            tindle::test::prepare(processor, channels, rate, prepared);
            juce::AudioBuffer<float> buffer(channels, size);
            // A warm-up as a host's first blocks would be, then the measured stretch.
            run(processor, input, 0, length * 2 / 3, size, buffer);
            m.trapped = tindle::test::trapSystemCalls();
            const int before = tindle::test::trappedSystemCalls();
            tindle::test::allocationCount = 0;
            tindle::test::countAllocations = true;
            tindle::test::countSystemCalls(true);
            run(processor, input, length * 2 / 3, length, size, buffer);
            tindle::test::countSystemCalls(false);
            tindle::test::countAllocations = false;
            m.allocations = tindle::test::allocationCount;
            m.systemCalls = tindle::test::trappedSystemCalls() - before;
            m.lastSystemCall = tindle::test::lastTrappedSystemCall();
        });
    audio.join();
    return m;
}
} // namespace

TEST(RealTime, ProcessBlockNeitherAllocatesNorCallsTheSystem)
{
    int configuration = 0;
    for (const double rate : {22050.0, 32000.0, 44100.0, 48000.0, 88200.0, 96000.0, 192000.0})
        for (const int channels : {1, 2})
        {
            const tindle::test::Channels input = damagedMusic(channels, rate, static_cast<int>(rate * 1.2));
            for (const int size : {1, 32, 64, 512, 4096})
            {
                std::unique_ptr<juce::AudioProcessor> processor(createPluginFilter());
                auto& engine =
                    dynamic_cast<Tindler&>(static_cast<BasePlugInProcessor&>(*processor).getEngine());
                // The residual on every other configuration, so that both paths are measured.
                engine.setParameter(Tindler::ResidualMode, (configuration++ % 2) == 0 ? 1.0f : 0.0f);
                const Measured m = measure(*processor, input, rate, size, size);
                SCOPED_TRACE(::testing::Message()
                             << rate << " Hz, " << channels << " channels, blocks of " << size);
                EXPECT_EQ(m.allocations, 0);
                if (m.trapped)
                {
                    EXPECT_EQ(m.systemCalls, 0) << "system call " << m.lastSystemCall;
                }
                float clicks = 0.0f;
                float crackles = 0.0f;
                ASSERT_TRUE(engine.readStatistics(clicks, crackles));
                EXPECT_GT(clicks, 0.0f);
                EXPECT_GT(crackles, 0.0f);
            }
        }
}

TEST(RealTime, ABlockLargerThanPreparedAllocatesOnceAndThenNoMore)
{
    const tindle::test::Channels input = damagedMusic(2, 44100.0, 44100 * 2);
    std::unique_ptr<juce::AudioProcessor> processor(createPluginFilter());
    // Prepared for 64, run at 4096: the warm-up in measure() takes what the larger blocks need.
    const Measured m = measure(*processor, input, 44100.0, 64, 4096);
    EXPECT_EQ(m.allocations, 0);
}
