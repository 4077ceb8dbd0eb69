#include "engine/Tindler.h"
#include "support/TestSignals.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace velmar::audio;

namespace
{
constexpr std::int32_t frameSamples = 2048;

// x[n] = 2 cos(w) x[n-1] - x[n-2] is an exact AR(2) model of a sinusoid of frequency w. With
// cos(w) = 0.75 the coefficient 1.5 is exact in float.
constexpr double cosW = 0.75;

Signal32 sinusoidFrame(std::int32_t channels)
{
    Signal32 s(channels, frameSamples);
    const double w = std::acos(cosW);
    for (std::int32_t c = 0; c < channels; ++c)
        for (std::int32_t n = 0; n < frameSamples; ++n)
            s.channel(c)[n] = static_cast<float>(0.8 * std::sin(w * n + 0.3 + c));
    return s;
}

/** The AR(2) predictor padded with zeros to count coefficients, per channel. */
Signal32 sinusoidPredictor(std::int32_t channels, std::int32_t count)
{
    Signal32 a(channels, count);
    a.fill(0.0f);
    for (std::int32_t c = 0; c < channels; ++c)
    {
        a.channel(c)[0] = 1.0f;
        a.channel(c)[1] = static_cast<float>(-2.0 * cosW);
        a.channel(c)[2] = 1.0f;
    }
    return a;
}

void damage(const Signal32& s, std::int32_t channel, std::int32_t start, std::int32_t end)
{
    for (std::int32_t i = start; i < end; ++i)
        s.channel(channel)[i] = (i % 2 == 0) ? 0.9f : -0.9f;
}
} // namespace

TEST(ClickRepair, AnExactModelFillsTheGapBack)
{
    const Signal32 clean = sinusoidFrame(2);
    for (const std::int32_t coefficients : {3, 24, 240})
        for (const std::int32_t gap : {2, 17, 88, 441})
        {
            const Signal32 frame = clean.clone();
            damage(frame, 1, 1000, 1000 + gap);
            const Signal32 repaired = Tindler::repairClicks(frame, sinusoidPredictor(2, coefficients),
                                                            {{0.0f, 1, 1000, 1000 + gap}});
            for (std::int32_t i = 1000; i < 1000 + gap; ++i)
                // Float samples seed a marginally stable recursion: their rounding (6e-8) grows at
                // most linearly over the gap.
                ASSERT_NEAR(repaired.channel(1)[i], clean.channel(1)[i], 1e-7 * (gap + 10))
                    << coefficients << " coefficients, gap " << gap << ", sample " << i;
            // Outside the region nothing changes, to the bit, and the frame handed in stays.
            for (std::int32_t i = 0; i < frameSamples; ++i)
            {
                ASSERT_EQ(repaired.channel(0)[i], frame.channel(0)[i]);
                if (i < 1000 || i >= 1000 + gap)
                    ASSERT_EQ(repaired.channel(1)[i], frame.channel(1)[i]);
            }
            EXPECT_EQ(frame.channel(1)[1000], 0.9f);
        }
}

TEST(ClickRepair, AOneSampleRegionTakesTheForwardPredictionOnly)
{
    auto rng = tindle::test::seededGenerator("one-sample region");
    const Signal32 frame = tindle::test::noise(rng, 1, frameSamples);
    const Signal32 a = tindle::test::noise(rng, 1, 24, 0.2f);
    a.channel(0)[0] = 1.0f;
    const Signal32 repaired = Tindler::repairClicks(frame, a, {{0.0f, 0, 700, 701}});
    double forward = 0.0;
    for (std::int32_t k = 1; k < 24; ++k)
        forward -= static_cast<double>(a.channel(0)[k]) * static_cast<double>(frame.channel(0)[700 - k]);
    EXPECT_EQ(repaired.channel(0)[700], static_cast<float>(forward));
}

TEST(ClickRepair, HistoryComesFromTheRawFrameAndTheLaterRegionWins)
{
    auto rng = tindle::test::seededGenerator("overlapping regions");
    const Signal32 frame = tindle::test::noise(rng, 1, frameSamples);
    const Signal32 a = tindle::test::noise(rng, 1, 240, 0.05f);
    a.channel(0)[0] = 1.0f;
    const ClickRegion first{0.0f, 0, 900, 960};
    const ClickRegion second{0.0f, 0, 940, 1000};
    const Signal32 both = Tindler::repairClicks(frame, a, {first, second});
    const Signal32 firstAlone = Tindler::repairClicks(frame, a, {first});
    const Signal32 secondAlone = Tindler::repairClicks(frame, a, {second});
    for (std::int32_t i = 900; i < 940; ++i)
        ASSERT_EQ(both.channel(0)[i], firstAlone.channel(0)[i]) << i;
    for (std::int32_t i = 940; i < 1000; ++i)
        ASSERT_EQ(both.channel(0)[i], secondAlone.channel(0)[i]) << i;
}
