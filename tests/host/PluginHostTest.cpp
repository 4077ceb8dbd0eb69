// Loads the built VST3 and LV2 bundles through JUCE's own plug-in hosting, as a DAW would, and
// checks them against the processor run in-process.

#include "engine/Tindler.h"
#include "shell/TindleAudioProcessor.h"
#include "support/HostedPlugin.h"
#include "support/Render.h"
#include "support/TestSignals.h"

#include <juce_audio_processors/juce_audio_processors.h>

#include <gtest/gtest.h>

#include <memory>

using tindle::test::Channels;

namespace
{
constexpr double hostRate = 44100.0;
constexpr int maxBlock = 4096;

tindle::test::HostedPlugin describe(const juce::String& formatName)
{
    return tindle::test::HostedPlugin::find(formatName, TINDLE_VST3_BUNDLE, TINDLE_LV2_BUNDLE,
                                            "urn:velmar-digital:tindle");
}

std::unique_ptr<juce::AudioPluginInstance> instantiate(const tindle::test::HostedPlugin& h, double rate)
{
    juce::String error;
    auto instance = h.instantiate(rate, maxBlock, error);
    EXPECT_TRUE(instance != nullptr) << error;
    return instance;
}

// The processor as the plug-in binaries hold it, in this process.
std::unique_ptr<juce::AudioProcessor> inProcess()
{
    return std::unique_ptr<juce::AudioProcessor>(createPluginFilter());
}

Channels testSignal(int channels, int length, std::uint32_t seed)
{
    auto rng = tindle::test::seededGenerator("host signal", seed);
    const auto s = tindle::test::noise(rng, channels, length, 0.3f);
    Channels out;
    for (int c = 0; c < channels; ++c)
    {
        out.push_back(tindle::test::samples(s, c));
        // An impulse on top of the noise, in every channel at a different place.
        out.back()[static_cast<std::size_t>(1000 + 777 * c)] += 0.9f;
    }
    return out;
}

class HostedFormat : public ::testing::TestWithParam<const char*>
{
};
} // namespace

TEST_P(HostedFormat, IdentityAndLayouts)
{
    const auto h = describe(GetParam());
    ASSERT_FALSE(h.description.name.isEmpty()) << "the " << GetParam() << " bundle was not found";
    EXPECT_EQ(h.description.name, "Velmar Digital Tindle");
    EXPECT_EQ(h.description.manufacturerName, "Velmar Digital");
    if (h.format->getName() == "VST3") // JUCE's LV2 host reads no version from the bundle
    {
        EXPECT_EQ(h.description.version, "1.1.1");
    }
    EXPECT_FALSE(h.description.isInstrument);

    auto instance = instantiate(h, hostRate);
    ASSERT_NE(instance, nullptr);
    EXPECT_EQ(instance->getName(), "Velmar Digital Tindle");
    EXPECT_FALSE(instance->acceptsMidi());
    EXPECT_FALSE(instance->producesMidi());
    EXPECT_EQ(instance->getTailLengthSeconds(), 0.0);
    EXPECT_TRUE(instance->hasEditor());
    EXPECT_EQ(instance->getTotalNumInputChannels(), 2);
    EXPECT_EQ(instance->getTotalNumOutputChannels(), 2);

    const auto layout = [](const juce::AudioChannelSet& in, const juce::AudioChannelSet& out)
    {
        juce::AudioProcessor::BusesLayout l;
        l.inputBuses.add(in);
        l.outputBuses.add(out);
        return l;
    };
    using Set = juce::AudioChannelSet;
    EXPECT_TRUE(instance->checkBusesLayoutSupported(layout(Set::stereo(), Set::stereo())));
    EXPECT_FALSE(instance->checkBusesLayoutSupported(layout(Set::stereo(), Set::mono())));
    EXPECT_FALSE(instance->checkBusesLayoutSupported(layout(Set::mono(), Set::stereo())));
    // An LV2 plug-in has a fixed set of ports, which JUCE's LV2 wrapper takes from the default
    // layout: the LV2 bundle is stereo only (see the README).
    EXPECT_EQ(instance->checkBusesLayoutSupported(layout(Set::mono(), Set::mono())),
              h.format->getName() == "VST3");
}

TEST_P(HostedFormat, LatencyAndAudioMatchTheInProcessPath)
{
    const auto h = describe(GetParam());
    ASSERT_FALSE(h.description.name.isEmpty());
    struct Run
    {
        double rate;
        int channels;
    };
    std::vector<Run> runs{{44100.0, 2}, {48000.0, 2}};
    if (h.format->getName() == "VST3")
        runs.push_back({44100.0, 1});
    for (const auto [rate, channels] : runs)
    {
        auto instance = instantiate(h, rate);
        ASSERT_NE(instance, nullptr);
        ASSERT_TRUE(tindle::test::prepare(*instance, channels, rate, maxBlock));
        auto reference = inProcess();
        ASSERT_TRUE(tindle::test::prepare(*reference, channels, rate, maxBlock));

        const Channels input = testSignal(channels, 30000, 7u);
        const std::vector<std::int32_t> blocks{512, 1, 333, maxBlock, 77};
        const Channels hosted = tindle::test::renderBlocks(*instance, input, blocks);
        const Channels expected = tindle::test::renderBlocks(*reference, input, blocks);

        // An LV2 instance reports its latency only once it has run a block, a VST3 one through
        // the message thread.
        tindle::test::pumpMessages();
        EXPECT_EQ(instance->getLatencySamples(), reference->getLatencySamples()) << rate;
        EXPECT_EQ(reference->getLatencySamples(), rate == 44100.0 ? 2751 : 2792);
        ASSERT_EQ(hosted.size(), expected.size());
        for (std::size_t c = 0; c < hosted.size(); ++c)
            for (std::size_t i = 0; i < hosted[c].size(); ++i)
                ASSERT_EQ(hosted[c][i], expected[c][i])
                    << GetParam() << " rate " << rate << " c " << c << " i " << i;
    }
}

INSTANTIATE_TEST_SUITE_P(Bundles, HostedFormat, ::testing::Values("VST3", "LV2"));
