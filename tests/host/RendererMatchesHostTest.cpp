// tindle-render against the built VST3 in a host: the same audio, sample for sample, once the
// host's output is shifted back by the latency the plug-in reports.

#include "support/AudioFileFixtures.h"
#include "support/HostedPlugin.h"
#include "support/Render.h"

#include <gtest/gtest.h>

#include <cstdlib>

TEST(RendererMatchesHost, SameAudioAsTheHostedVst3AfterDelayCompensation)
{
    const auto dir = tindle::test::scratchFolder("renderer-vs-host");
    const auto input = dir.getChildFile("in.wav");
    // Float samples, so that neither side rounds to integers.
    ASSERT_TRUE(tindle::test::writeAudioFile(input, "wav", 2, 44100.0, 32, 50000, 21));
    const tindle::test::Channels source = tindle::test::readAudioFile(input);

    const auto plugin = tindle::test::HostedPlugin::find("VST3", TINDLE_VST3_BUNDLE, TINDLE_LV2_BUNDLE,
                                                         "urn:velmar-digital:tindle");
    ASSERT_TRUE(plugin.found());
    for (const int block : {512, 333})
    {
        const auto output = dir.getChildFile("out-" + juce::String(block) + ".wav");
        const std::string command = "'" TINDLE_RENDER_BINARY "' --quiet --float --block-size " +
                                    std::to_string(block) + " '" + input.getFullPathName().toStdString() +
                                    "' '" + output.getFullPathName().toStdString() + "'";
        ASSERT_EQ(std::system(command.c_str()), 0);
        const tindle::test::Channels rendered = tindle::test::readAudioFile(output);

        juce::String error;
        auto instance = plugin.instantiate(44100.0, block, error);
        ASSERT_NE(instance, nullptr) << error;
        ASSERT_TRUE(tindle::test::prepare(*instance, 2, 44100.0, block));
        tindle::test::Channels padded = source;
        for (auto& channel : padded)
            channel.resize(channel.size() + 20000, 0.0f); // room for the latency to come out
        const tindle::test::Channels hosted = tindle::test::renderBlocks(*instance, padded, {block});
        tindle::test::pumpMessages();
        const auto latency = static_cast<std::size_t>(instance->getLatencySamples());
        ASSERT_EQ(latency, 2751u);

        ASSERT_EQ(rendered.size(), 2u);
        for (std::size_t c = 0; c < 2; ++c)
        {
            ASSERT_EQ(rendered[c].size(), source[c].size());
            for (std::size_t i = 0; i < rendered[c].size(); ++i)
                ASSERT_EQ(rendered[c][i], hosted[c][i + latency])
                    << "block " << block << " channel " << c << " sample " << i;
        }
    }
}
