// The crackle stage on single frames, against a spectral subtraction computed in double.

#include "engine/Tindler.h"
#include "support/TestSignals.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <memory>
#include <vector>

using namespace velmar::audio;

namespace
{
/** A Tindler set up and reset; not copyable, so made on the heap. */
std::unique_ptr<Tindler> engineAt(double rate, std::int32_t channels = 2)
{
    auto t = std::make_unique<Tindler>();
    t->setUp(channels, rate);
    t->reset();
    return t;
}

/** The denoised frame at one position, in double: every bin's magnitude less a flat amount,
    clipped at zero, phases kept, transformed back. */
double denoisedAt(const std::vector<float>& x, double subtraction, std::size_t position)
{
    const std::size_t n = x.size();
    double sum = 0.0;
    for (std::size_t k = 0; k <= n / 2; ++k)
    {
        std::complex<double> bin = 0.0;
        for (std::size_t t = 0; t < n; ++t)
            bin += static_cast<double>(x[t]) *
                   std::polar(1.0, -2.0 * M_PI * static_cast<double>((k * t) % n) / n);
        const double magnitude = std::max(std::abs(bin), 2.5118843e-10);
        const double gain = std::clamp(1.0 - subtraction / magnitude, 0.0, 1.0);
        const double weight = (k == 0 || k == n / 2) ? 1.0 : 2.0; // conjugate bins
        sum +=
            weight *
            (gain * bin * std::polar(1.0, 2.0 * M_PI * static_cast<double>((k * position) % n) / n)).real();
    }
    return sum / static_cast<double>(n);
}
} // namespace

TEST(CrackleReduction, OnlyTheNotchesAroundEachPointChange)
{
    auto owner = engineAt(44100.0);
    Tindler& t = *owner;
    auto rng = tindle::test::seededGenerator("crackle notches");
    const Signal32 frame = tindle::test::noise(rng, 2, t.getFrameLength(), 0.3f);
    const ChannelLevels levels{0.05f, 0.2f};
    const CrackleList points{{1, 900}, {1, 1300}, {1, 1301}, {0, 1500}};
    const Signal32 result = t.reduceCrackle(frame, points, levels);
    EXPECT_FALSE(result.sharesBlockWith(frame));

    // The pulse is 9 samples long at 44.1 kHz: a point touches itself and 4 on either side.
    for (std::int32_t c = 0; c < 2; ++c)
        for (std::int32_t i = 0; i < frame.length(); ++i)
        {
            bool inNotch = false;
            for (const CracklePoint& p : points)
                inNotch = inNotch || (p.channel == c && std::abs(i - p.position) <= 4);
            if (!inNotch)
                ASSERT_EQ(result.channel(c)[i], frame.channel(c)[i]) << c << " " << i;
        }

    // The centre of a lone notch comes wholly from the denoised frame; the default reduction of 30
    // takes 30 times the channel's detector level off every bin.
    for (const CracklePoint& p : {points[0], points[3]})
    {
        const auto x = tindle::test::samples(frame, p.channel);
        const double expected = denoisedAt(x, 30.0 * levels[static_cast<std::size_t>(p.channel)],
                                           static_cast<std::size_t>(p.position));
        // Two float transforms of 2048 points of values below 0.3: errors of order 1e-6.
        EXPECT_NEAR(result.channel(p.channel)[p.position], expected, 2e-5) << p.position;
        EXPECT_GT(std::fabs(expected - frame.channel(p.channel)[p.position]), 1e-3);
    }
}

TEST(CrackleReduction, NeutralSettingsAndTheStampShape)
{
    auto owner = engineAt(48000.0);
    Tindler& t = *owner;
    auto rng = tindle::test::seededGenerator("crackle neutral");
    const Signal32 frame = tindle::test::noise(rng, 2, t.getFrameLength(), 0.3f);
    const ChannelLevels levels{0.1f, 0.1f};

    // No points: the frame itself, to the bit.
    const Signal32 untouched = t.reduceCrackle(frame, {}, levels);
    for (std::int32_t c = 0; c < 2; ++c)
        for (std::int32_t i = 0; i < frame.length(); ++i)
            ASSERT_EQ(untouched.channel(c)[i], frame.channel(c)[i]);

    // A reduction of 0 keeps every gain at 1: the splice changes only the rounding of the two
    // transforms (relative 1e-6 of the frame's level).
    t.setParameter(Tindler::CrackleReduction, 0.0f);
    const Signal32 same = t.reduceCrackle(frame, {{0, 1000}, {0, 1001}}, levels);
    for (std::int32_t i = 990; i < 1012; ++i)
        ASSERT_NEAR(same.channel(0)[i], frame.channel(0)[i], 1e-5f) << i;

    // A loud level empties every bin: the notch cuts to silence at its centre and follows the
    // inverted raised cosine of 11 samples (48 kHz) around it.
    t.setParameter(Tindler::CrackleReduction, 100.0f);
    const ChannelLevels loud{1e6f, 1e6f};
    const Signal32 cut = t.reduceCrackle(frame, {{1, 1200}}, loud);
    for (std::int32_t j = -5; j <= 5; ++j)
    {
        const double pulse = 0.5 * std::cos((j + 6) * 2.0 * M_PI / 12.0) + 0.5;
        // Float pulse against the double formula: a few float roundings.
        ASSERT_NEAR(cut.channel(1)[1200 + j], pulse * frame.channel(1)[1200 + j], 1e-6) << j;
    }
    EXPECT_EQ(cut.channel(1)[1200], 0.0f);
}
