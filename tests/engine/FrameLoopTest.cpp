#include "engine/Tindler.h"
#include "support/TestSignals.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace velmar::audio;
using tindle::test::noise;
using tindle::test::seededGenerator;

namespace
{
struct SizeRow
{
    double rate;
    std::int32_t kernel, scanMargin, overlap, frameLength, hop, latency;
};

// Worked out by hand from the derivation: kernel 0.5 ms, longest click 10 ms, guard 5 %, order 240.
constexpr SizeRow sizeTable[] = {
    {22050, 11, 251, 471, 1024, 82, 1495},      {32000, 16, 256, 576, 2048, 896, 2624},
    {44100, 22, 262, 703, 2048, 642, 2751},     {48000, 24, 264, 744, 2048, 560, 2792},
    {88200, 44, 284, 1166, 4096, 1764, 5262},   {96000, 48, 288, 1248, 4096, 1600, 5344},
    {192000, 96, 336, 2256, 8192, 3680, 10448},
};

void passThrough(Tindler& t)
{
    t.setParameter(Tindler::EnableTindle, 0.0f);
    t.setParameter(Tindler::EnableDecrackle, 0.0f);
}
} // namespace

TEST(TindlerSizes, DerivedFromTheSampleRate)
{
    for (const auto& row : sizeTable)
    {
        Tindler t;
        ASSERT_TRUE(t.setUp(2, row.rate));
        EXPECT_EQ(t.getSmoothingKernel().length(), row.kernel) << row.rate;
        EXPECT_EQ(t.getSmoothingKernel().channelCount(), 2);
        EXPECT_EQ(t.getScanMargin(), row.scanMargin) << row.rate;
        EXPECT_EQ(t.getOverlap(), row.overlap) << row.rate;
        EXPECT_EQ(t.getFrameLength(), row.frameLength) << row.rate;
        EXPECT_EQ(t.getHop(), row.hop) << row.rate;
        EXPECT_EQ(t.latency(), row.latency) << row.rate;
    }
}

// Under 38 Hz the frame's first power of two is 0; the sizes still come out and frames run.
TEST(TindlerSizes, RatesFarBelowAudioStillGiveAFrame)
{
    for (const double rate : {0.0, 1.0, 24.0, 37.0})
    {
        Tindler t;
        ASSERT_TRUE(t.setUp(1, rate));
        t.reset();
        EXPECT_GT(t.getHop(), 0) << rate;
        Signal32 ones(1, 4 * t.latency());
        ones.fill(1.0f);
        const Signal32 out = t.process(ones);
        EXPECT_GE(out.length(), ones.length() - t.latency()) << rate;
    }
}

TEST(TindlerSizes, SmoothingKernelIsAHannWithoutEndPoints)
{
    Tindler t;
    t.setUp(1, 44100.0);
    const Signal32& k = t.getSmoothingKernel();
    double sum = 0.0;
    for (std::int32_t i = 0; i < k.length(); ++i)
    {
        const double expected = (0.5 - 0.5 * std::cos(2.0 * M_PI * (i + 1) / 23.0)) / 22.0;
        // Float taps against a double reference: a few float roundings of values below 0.05.
        EXPECT_NEAR(static_cast<double>(k.channel(0)[i]), expected, 1e-8);
        sum += static_cast<double>(k.channel(0)[i]);
    }
    EXPECT_NEAR(sum, 23.0 / 44.0, 1e-6);
}

TEST(TindlerParameters, TableDefaultsAndErrors)
{
    Tindler t;
    const float defaults[] = {1, 30, 2, 0, 1, 30, 30, 0};
    const float minima[] = {0, 0, 0.1f, 0, 0, 0, 0, 0};
    const float maxima[] = {1, 100, 10, 1, 1, 100, 100, 1};
    for (std::int32_t i = 0; i < Tindler::parameterCount; ++i)
    {
        float lo = -1.0f;
        float hi = -1.0f;
        t.parameterRange(i, lo, hi);
        EXPECT_EQ(t.parameter(i), defaults[i]) << i;
        EXPECT_EQ(lo, minima[i]) << i;
        EXPECT_EQ(hi, maxima[i]) << i;
    }

    // Switches store "greater than one half"; values are stored unclamped.
    t.setParameter(Tindler::EnableTindle, 0.5f);
    EXPECT_EQ(t.parameter(Tindler::EnableTindle), 0.0f);
    t.setParameter(Tindler::ResidualMode, 0.51f);
    EXPECT_EQ(t.parameter(Tindler::ResidualMode), 1.0f);
    t.setParameter(Tindler::ClickSensitivity, 150.0f);
    EXPECT_EQ(t.parameter(Tindler::ClickSensitivity), 150.0f);

    float lo = 0.0f;
    float hi = 0.0f;
    for (const std::int32_t bad : {8, -1, 1000})
    {
        try
        {
            t.parameter(bad);
            ADD_FAILURE() << "no error for " << bad;
        }
        catch (const std::out_of_range& e)
        {
            EXPECT_STREQ(e.what(), "Parameter index");
        }
        EXPECT_THROW(t.setParameter(bad, 1.0f), std::out_of_range);
        EXPECT_THROW(t.parameterRange(bad, lo, hi), std::out_of_range);
    }
}

TEST(TindlerFrameLoop, ShortBlocksAreOnlyQueuedUntilAFrameIsDue)
{
    Tindler t;
    t.setUp(1, 44100.0);
    t.reset();
    passThrough(t);
    auto rng = seededGenerator("short blocks");
    const Signal32 input = noise(rng, 1, t.getFrameLength() + 1);

    // Exactly frameLength samples run no frame; one more runs the first.
    const Signal32 first = t.process(input.slice(0, t.getFrameLength()));
    EXPECT_EQ(first.length(), 0);
    const Signal32 second = t.process(input.slice(t.getFrameLength(), 1));
    ASSERT_EQ(second.length(), t.getHop());
    for (std::int32_t i = 0; i < t.getHop(); ++i)
        ASSERT_EQ(second.channel(0)[i], input.channel(0)[i]);

    // A block shorter than a hop is queued again.
    EXPECT_EQ(t.process(input.slice(0, t.getHop() - 1)).length(), 0);
    EXPECT_EQ(t.process(Signal32()).length(), 0);

    // A block of many frames runs them all in one call: with the hop - 1 samples queued above, a
    // block of 5 hops + 1 completes six.
    EXPECT_EQ(t.process(noise(rng, 1, 5 * t.getHop() + 1)).length(), 6 * t.getHop());
}

TEST(TindlerFrameLoop, PassThroughOutputEqualsInputAcrossBlockSizes)
{
    for (const std::int32_t channels : {1, 2})
    {
        Tindler t;
        t.setUp(channels, 48000.0);
        t.reset();
        passThrough(t);
        auto rng = seededGenerator("pass-through");
        const std::int32_t total = 40000;
        const Signal32 input = noise(rng, channels, total);

        std::vector<std::vector<float>> output(static_cast<std::size_t>(channels));
        std::int32_t position = 0;
        for (const std::int32_t n : tindle::test::randomBlockSizes(rng, total))
        {
            const Signal32 out = t.process(input.slice(position, n));
            position += n;
            // Output comes in whole hops; a long block runs several frames at once.
            EXPECT_EQ(out.length() % t.getHop(), 0);
            for (std::int32_t c = 0; c < out.channelCount(); ++c)
                output[static_cast<std::size_t>(c)].insert(output[static_cast<std::size_t>(c)].end(),
                                                           out.channel(c), out.channel(c) + out.length());
        }
        // After N samples at least N - frameLength have come back.
        ASSERT_GE(static_cast<std::int32_t>(output[0].size()), total - t.getFrameLength());
        for (std::int32_t c = 0; c < channels; ++c)
            for (std::size_t i = 0; i < output[static_cast<std::size_t>(c)].size(); ++i)
                ASSERT_EQ(output[static_cast<std::size_t>(c)][i], input.channel(c)[i])
                    << "c " << c << " i " << i;
    }
}
