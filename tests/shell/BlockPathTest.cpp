#include "engine/Tindler.h"
#include "shell/TindleAudioProcessor.h"
#include "support/Render.h"
#include "support/TestSignals.h"

#include <gtest/gtest.h>

#include <memory>

using tindle::test::Channels;
using velmar::audio::Tindler;

namespace
{
std::unique_ptr<BasePlugInProcessor> makeProcessor()
{
    return std::unique_ptr<BasePlugInProcessor>(static_cast<BasePlugInProcessor*>(createPluginFilter()));
}

// With both detectors off and the residual off, the engine passes audio unchanged.
void switchRestorationOff(BasePlugInProcessor& p)
{
    p.getEngine().setParameter(Tindler::EnableTindle, 0.0f);
    p.getEngine().setParameter(Tindler::EnableDecrackle, 0.0f);
    p.getEngine().setParameter(Tindler::ResidualMode, 0.0f);
}

Channels noiseChannels(std::mt19937& rng, int channels, int length)
{
    const auto s = tindle::test::noise(rng, channels, length);
    Channels out;
    for (int c = 0; c < channels; ++c)
        out.push_back(tindle::test::samples(s, c));
    return out;
}
} // namespace

TEST(BlockPath, LatencyIsTheEnginesAtATruncatedRate)
{
    auto p = makeProcessor();
    ASSERT_TRUE(tindle::test::prepare(*p, 2, 44100.7, 512));
    EXPECT_EQ(p->getLatencySamples(), 2751);
    EXPECT_EQ(p->getEngine().getSampleRate(), 44100.0);
    ASSERT_TRUE(tindle::test::prepare(*p, 1, 96000.0, 64));
    EXPECT_EQ(p->getLatencySamples(), 5344);
    EXPECT_EQ(p->getEngine().getNumChannels(), 1);
}

TEST(BlockPath, AnImpulseComesOutExactlyOneLatencyLater)
{
    auto rng = tindle::test::seededGenerator("impulse alignment");
    for (const double rate : {44100.0, 48000.0})
        for (const int channels : {1, 2})
            for (int trial = 0; trial < 3; ++trial)
            {
                auto p = makeProcessor();
                switchRestorationOff(*p);
                ASSERT_TRUE(tindle::test::prepare(*p, channels, rate, 512));
                const int latency = p->getLatencySamples();
                const int total = 3 * latency + 20000;
                const int k = std::uniform_int_distribution<int>(0, total - latency - 1)(rng);

                Channels input(static_cast<std::size_t>(channels),
                               std::vector<float>(static_cast<std::size_t>(total)));
                for (int c = 0; c < channels; ++c)
                    input[static_cast<std::size_t>(c)][static_cast<std::size_t>(k)] =
                        1.0f - 0.25f * static_cast<float>(c);

                const auto sizes = tindle::test::randomBlockSizes(rng, total);
                const Channels output = tindle::test::renderBlocks(*p, input, sizes);
                for (int c = 0; c < channels; ++c)
                    for (int i = 0; i < total; ++i)
                    {
                        const float expected =
                            i == k + latency ? input[static_cast<std::size_t>(c)][static_cast<std::size_t>(k)]
                                             : 0.0f;
                        ASSERT_EQ(output[static_cast<std::size_t>(c)][static_cast<std::size_t>(i)], expected)
                            << "rate " << rate << " channels " << channels << " k " << k << " i " << i;
                    }
            }
}

TEST(BlockPath, FirstLatencySamplesAreZerosThenTheInputFollows)
{
    auto rng = tindle::test::seededGenerator("leading zeros");
    auto p = makeProcessor();
    switchRestorationOff(*p);
    ASSERT_TRUE(tindle::test::prepare(*p, 2, 48000.0, 256));
    const int latency = p->getLatencySamples();
    const Channels input = noiseChannels(rng, 2, 4 * latency);
    const Channels output = tindle::test::renderBlocks(*p, input, {256, 1, 0, 4099});
    for (std::size_t c = 0; c < 2; ++c)
    {
        for (int i = 0; i < latency; ++i)
            ASSERT_EQ(output[c][static_cast<std::size_t>(i)], 0.0f) << i;
        for (std::size_t i = static_cast<std::size_t>(latency); i < output[c].size(); ++i)
            ASSERT_EQ(output[c][i], input[c][i - static_cast<std::size_t>(latency)]) << i;
    }
}

TEST(BlockPath, ASecondPrepareRestartsLikeAFreshInstance)
{
    auto rng = tindle::test::seededGenerator("second prepare");
    const Channels warmUp = noiseChannels(rng, 2, 7777);
    const Channels input = noiseChannels(rng, 2, 12000);

    auto used = makeProcessor();
    ASSERT_TRUE(tindle::test::prepare(*used, 2, 44100.0, 300));
    tindle::test::renderBlocks(*used, warmUp, {300});
    used->releaseResources();
    ASSERT_TRUE(tindle::test::prepare(*used, 2, 44100.0, 300));
    const Channels again = tindle::test::renderBlocks(*used, input, {300, 17});

    auto fresh = makeProcessor();
    ASSERT_TRUE(tindle::test::prepare(*fresh, 2, 44100.0, 300));
    const Channels expected = tindle::test::renderBlocks(*fresh, input, {300, 17});
    EXPECT_EQ(again, expected);
}

TEST(BlockPath, ReleaseAndHostResetContinueTheStream)
{
    auto rng = tindle::test::seededGenerator("release continues");
    const Channels input = noiseChannels(rng, 1, 20000);

    auto reference = makeProcessor();
    switchRestorationOff(*reference);
    ASSERT_TRUE(tindle::test::prepare(*reference, 1, 44100.0, 500));
    const Channels whole = tindle::test::renderBlocks(*reference, input, {500});

    auto p = makeProcessor();
    switchRestorationOff(*p);
    ASSERT_TRUE(tindle::test::prepare(*p, 1, 44100.0, 500));
    const Channels firstHalf{{input[0].begin(), input[0].begin() + 10000}};
    const Channels secondHalf{{input[0].begin() + 10000, input[0].end()}};
    Channels out = tindle::test::renderBlocks(*p, firstHalf, {500});
    p->releaseResources();
    p->reset();
    const Channels rest = tindle::test::renderBlocks(*p, secondHalf, {500});
    out[0].insert(out[0].end(), rest[0].begin(), rest[0].end());
    EXPECT_EQ(out, whole);
}

TEST(BlockPath, ZeroLengthBlocksAndChannelWriteBack)
{
    auto p = makeProcessor();
    ASSERT_TRUE(tindle::test::prepare(*p, 1, 44100.0, 64));
    juce::MidiBuffer midi;
    juce::AudioBuffer<float> empty(1, 0);
    p->processBlock(empty, midi);

    // Channels of the buffer beyond the processor's own are neither read nor written.
    juce::AudioBuffer<float> wide(2, 64);
    wide.clear();
    for (int i = 0; i < 64; ++i)
        wide.setSample(1, i, 0.75f);
    p->processBlock(wide, midi);
    for (int i = 0; i < 64; ++i)
    {
        EXPECT_EQ(wide.getSample(0, i), 0.0f);
        EXPECT_EQ(wide.getSample(1, i), 0.75f);
    }
}

TEST(BlockPath, OnlyEqualMonoOrStereoLayouts)
{
    auto p = makeProcessor();
    const auto layout = [](juce::AudioChannelSet in, juce::AudioChannelSet out)
    {
        juce::AudioProcessor::BusesLayout l;
        l.inputBuses.add(in);
        l.outputBuses.add(out);
        return l;
    };
    using Set = juce::AudioChannelSet;
    EXPECT_TRUE(p->checkBusesLayoutSupported(layout(Set::stereo(), Set::stereo())));
    EXPECT_TRUE(p->checkBusesLayoutSupported(layout(Set::mono(), Set::mono())));
    EXPECT_FALSE(p->checkBusesLayoutSupported(layout(Set::stereo(), Set::mono())));
    EXPECT_FALSE(p->checkBusesLayoutSupported(layout(Set::mono(), Set::stereo())));
    EXPECT_FALSE(p->checkBusesLayoutSupported(layout(Set::create5point1(), Set::create5point1())));
    EXPECT_EQ(p->getName(), "Velmar Digital Tindle");
    EXPECT_EQ(p->getTotalNumInputChannels(), 2);
}
