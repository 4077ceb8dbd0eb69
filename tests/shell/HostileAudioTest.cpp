// Input that no recording should contain: the plug-in neither crashes nor passes it on, and once it
// has left the engine's frame the output follows the input again.

#include "shell/TindleAudioProcessor.h"
#include "support/Material.h"
#include "support/Render.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <functional>
#include <limits>
#include <memory>

namespace
{
constexpr double rate = 44100.0;
constexpr int badStart = 30000;
constexpr int badLength = 3000;
constexpr int total = 80000;

tindle::test::Channels music()
{
    std::mt19937 rng(31);
    const auto s = tindle::test::musicLike(rng, 2, total, rate, 0.02f);
    tindle::test::Channels out;
    for (int c = 0; c < 2; ++c)
        out.emplace_back(s.channel(c), s.channel(c) + total);
    return out;
}
} // namespace

TEST(HostileAudio, NothingCrashesAndTheOutputRecovers)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    struct Kind
    {
        const char* name;
        std::function<float(int)> sample;
    };
    const Kind kinds[] = {
        {"NaN", [&](int) { return nan; }},
        {"+Inf", [&](int) { return inf; }},
        {"-Inf", [&](int) { return -inf; }},
        {"NaN and Inf mixed", [&](int i) { return i % 3 == 0 ? nan : (i % 3 == 1 ? inf : 0.5f); }},
        {"full-scale square", [](int i) { return (i / 50) % 2 == 0 ? 1.0f : -1.0f; }},
        {"DC", [](int) { return 1.0f; }},
        {"denormals",
         [](int i) { return (i % 2 == 0 ? 1.0f : -1.0f) * FLT_MIN / static_cast<float>(2 + i % 5); }},
        {"silence", [](int) { return 0.0f; }},
    };
    const tindle::test::Channels clean = music();
    for (const Kind& kind : kinds)
    {
        SCOPED_TRACE(kind.name);
        tindle::test::Channels input = clean;
        for (auto& channel : input)
            for (int i = 0; i < badLength; ++i)
                channel[static_cast<std::size_t>(badStart + i)] = kind.sample(i);

        std::unique_ptr<juce::AudioProcessor> processor(createPluginFilter());
        ASSERT_TRUE(tindle::test::prepare(*processor, 2, rate, 512));
        const int latency = processor->getLatencySamples();
        const auto output = tindle::test::renderBlocks(*processor, input, {512, 77, 1});

        // The engine's frame holds the bad stretch for at most one latency and one frame (2048
        // samples at 44.1 kHz) after it; a click repaired at the join may reach a frame further.
        const int recovered = badStart + badLength + 2 * 2048;
        for (std::size_t c = 0; c < 2; ++c)
            for (int i = 0; i < total; ++i)
            {
                const float v = output[c][static_cast<std::size_t>(i)];
                ASSERT_TRUE(std::isfinite(v)) << "sample " << i;
                ASSERT_FALSE(std::fpclassify(v) == FP_SUBNORMAL) << "sample " << i;
                if (i >= recovered + latency)
                    ASSERT_EQ(v, input[c][static_cast<std::size_t>(i - latency)]) << "sample " << i;
            }
    }
}
