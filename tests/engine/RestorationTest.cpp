// The restoration chain end to end through Tindler::process, on material this test makes.

#include "engine/Tindler.h"
#include "support/EngineRun.h"
#include "support/Material.h"
#include "support/TestSignals.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <vector>

using namespace velmar::audio;
using tindle::test::processWhole;

namespace
{
constexpr double rate = 44100.0;

struct Click
{
    std::int32_t channel;
    std::int32_t position;
    std::int32_t width;
};

/** Music-like material with strong clicks at the given places: impulsive noise bursts, which no
    predictor of the material can follow. (A ringing click is partly learnt by the frame's own
    predictor; the quality benchmark measures those.) */
struct Damaged
{
    Signal32 clean;
    Signal32 damaged;
    std::vector<Click> clicks;
};

Damaged damagedMaterial(std::uint32_t seed, std::int32_t channels, std::int32_t length,
                        const std::vector<Click>& clicks)
{
    auto rng = tindle::test::seededGenerator("damaged material", seed);
    // Low level: even where a click dominates the frame's short predictor, and the music's error
    // is the music itself, it stays below the default crackle threshold of -30 dB.
    Damaged d{tindle::test::musicLike(rng, channels, length, rate, 0.02f), {}, clicks};
    d.damaged = d.clean.clone();
    std::uniform_real_distribution<float> amplitude(0.3f, 0.8f);
    for (const Click& click : clicks)
        tindle::test::addClick(d.damaged, click.channel, click.position, click.width, amplitude(rng), false,
                               rng);
    return d;
}

/** A Tindler set up at 44.1 kHz and reset; not copyable, so made on the heap. */
std::unique_ptr<Tindler> preparedEngine(std::int32_t channels)
{
    auto t = std::make_unique<Tindler>();
    t->setUp(channels, rate);
    t->reset();
    return t;
}

double energy(const float* a, const float* b, std::int32_t from, std::int32_t to)
{
    double sum = 0.0;
    for (std::int32_t i = from; i < to; ++i)
    {
        const double d = static_cast<double>(a[i]) - static_cast<double>(b[i]);
        sum += d * d;
    }
    return sum;
}
} // namespace

TEST(Restoration, BothDetectorsOffGiveTheInputBack)
{
    const Damaged d = damagedMaterial(11, 2, 44100, {{0, 5000, 20}, {1, 20000, 3}});
    auto tOwner = preparedEngine(2);
    Tindler& t = *tOwner;
    t.setParameter(Tindler::EnableTindle, 0.0f);
    t.setParameter(Tindler::EnableDecrackle, 0.0f);
    const Signal32 out = processWhole(t, d.damaged, 333);
    for (std::int32_t c = 0; c < 2; ++c)
        for (std::int32_t i = 0; i < out.length(); ++i)
            ASSERT_EQ(out.channel(c)[i], d.damaged.channel(c)[i]) << c << " " << i;

    // With nothing detected, the residual is exact silence.
    auto rOwner = preparedEngine(2);
    Tindler& r = *rOwner;
    r.setParameter(Tindler::EnableTindle, 0.0f);
    r.setParameter(Tindler::EnableDecrackle, 0.0f);
    r.setParameter(Tindler::ResidualMode, 1.0f);
    const Signal32 residual = processWhole(r, d.damaged, 4096);
    for (std::int32_t c = 0; c < 2; ++c)
        for (std::int32_t i = 0; i < residual.length(); ++i)
            ASSERT_EQ(residual.channel(c)[i], 0.0f) << c << " " << i;
}

TEST(Restoration, StrongClicksAreRemovedAndNothingElseChanges)
{
    const std::int32_t hop = preparedEngine(1)->getHop();
    // Clicks of 1 to 60 samples (up to 1.4 ms), two of them across frame seams (multiples of the
    // hop in stream positions), one on each channel at the same place.
    const std::vector<Click> clicks{{0, 3000, 1},           {1, 3000, 4},   {0, 9 * hop - 10, 20},
                                    {1, 20 * hop - 30, 60}, {0, 30000, 44}, {1, 41000, 2},
                                    {0, 52011, 9},          {1, 60000, 33}, {0, 70000, 12}};
    const Damaged d = damagedMaterial(12, 2, 80000, clicks);
    auto tOwner = preparedEngine(2);
    Tindler& t = *tOwner;
    const Signal32 out = processWhole(t, d.damaged, 512);

    // The longest region a default click length repairs, with its guard on both sides.
    const std::int32_t reach = 88 + 2 * 4;
    std::vector<std::vector<bool>> near(2, std::vector<bool>(static_cast<std::size_t>(out.length()), false));
    for (const Click& click : clicks)
    {
        const std::int32_t from = click.position - reach;
        const std::int32_t to = click.position + click.width + reach;
        for (std::int32_t i = from; i < to; ++i)
            near[static_cast<std::size_t>(click.channel)][static_cast<std::size_t>(i)] = true;

        const float* restored = out.channel(click.channel);
        const double before =
            energy(d.damaged.channel(click.channel), d.clean.channel(click.channel), from, to);
        const double after = energy(restored, d.clean.channel(click.channel), from, to);
        EXPECT_LT(after, before / 100.0)
            << "click at " << click.position << " on channel " << click.channel << ": error energy "
            << 10.0 * std::log10(before / after) << " dB down";
    }
    for (std::int32_t c = 0; c < 2; ++c)
        for (std::int32_t i = 0; i < out.length(); ++i)
            if (!near[static_cast<std::size_t>(c)][static_cast<std::size_t>(i)])
                ASSERT_EQ(out.channel(c)[i], d.damaged.channel(c)[i])
                    << "changed far from any click: " << c << " " << i;
}

TEST(Restoration, ResidualIsTheInputLessTheRestoredSignal)
{
    const Damaged d = damagedMaterial(13, 1, 30000, {{0, 7000, 10}, {0, 15000, 40}});
    auto restoringOwner = preparedEngine(1);
    Tindler& restoring = *restoringOwner;
    const Signal32 restored = processWhole(restoring, d.damaged, 256);
    auto residualEngineOwner = preparedEngine(1);
    Tindler& residualEngine = *residualEngineOwner;
    residualEngine.setParameter(Tindler::ResidualMode, 1.0f);
    const Signal32 residual = processWhole(residualEngine, d.damaged, 700);

    double clickEnergy = 0.0;
    for (std::int32_t i = 0; i < residual.length(); ++i)
    {
        ASSERT_EQ(residual.channel(0)[i], d.damaged.channel(0)[i] - restored.channel(0)[i]) << i;
        clickEnergy += std::fabs(residual.channel(0)[i]);
    }
    EXPECT_GT(clickEnergy, 1.0);
}

TEST(Restoration, SettingsActFromTheNextFrame)
{
    const Damaged d = damagedMaterial(14, 1, 40000, {{0, 6000, 10}, {0, 30000, 10}});
    auto plainOwner = preparedEngine(1);
    Tindler& plain = *plainOwner;
    const Signal32 restored = processWhole(plain, d.damaged, 64);
    auto residualOwner = preparedEngine(1);
    Tindler& residual = *residualOwner;
    residual.setParameter(Tindler::ResidualMode, 1.0f);
    const Signal32 removed = processWhole(residual, d.damaged, 64);

    // Switch to the residual after exactly 25 frames: their output is the restored signal, all
    // later output the residual, with no fade between.
    auto tOwner = preparedEngine(1);
    Tindler& t = *tOwner;
    const std::int32_t firstPart = t.getFrameLength() + 24 * t.getHop() + 1;
    const Signal32 head = t.process(d.damaged.slice(0, firstPart));
    ASSERT_EQ(head.length(), 25 * t.getHop());
    t.setParameter(Tindler::ResidualMode, 1.0f);
    // The click length is free to change: it moves neither the latency nor the frame.
    const std::int32_t latency = t.latency();
    const std::int32_t frame = t.getFrameLength();
    for (const float ms : {0.1f, 10.0f, 50.0f, 2.0f})
    {
        t.setParameter(Tindler::ClickLength, ms);
        EXPECT_EQ(t.latency(), latency);
        EXPECT_EQ(t.getFrameLength(), frame);
    }
    const Signal32 tail = t.process(d.damaged.slice(firstPart, 40000 - firstPart));
    for (std::int32_t i = 0; i < head.length(); ++i)
        ASSERT_EQ(head.channel(0)[i], restored.channel(0)[i]) << i;
    for (std::int32_t i = 0; i < tail.length(); ++i)
        ASSERT_EQ(tail.channel(0)[i], removed.channel(0)[head.length() + i]) << i;
}

TEST(Restoration, StatisticsCountClicksAndCracklePerSecondAndChannel)
{
    // Feeds exactly the input, with no flush, and returns how many frames ran.
    const auto feed = [](Tindler& t, const Signal32& input)
    {
        const std::int32_t block = 512;
        std::int32_t frames = 0;
        for (std::int32_t position = 0; position < input.length(); position += block)
            frames += t.process(input.slice(position, std::min(block, input.length() - position))).length() /
                      t.getHop();
        return frames;
    };

    // Clicks late in an output section are seen by one frame only: the frame before stops scanning
    // 441 samples into the section, the frame after starts behind them.
    // Crackle is off here: a frame that a click dominates may mark a few points in its music.
    auto engineOwner = preparedEngine(2);
    Tindler& t = *engineOwner;
    t.setParameter(Tindler::EnableDecrackle, 0.0f);
    const std::int32_t hop = t.getHop();
    const std::int32_t counted = t.getFrameLength() - 2 * t.getScanMargin();
    std::vector<Click> clicks;
    for (std::int32_t k = 3; k < 60; k += 4)
        clicks.push_back({(k / 4) % 2, k * hop + 560, 6});
    const Damaged d = damagedMaterial(15, 2, 62 * hop, clicks);
    const std::int32_t frames = feed(t, d.damaged);
    std::int32_t seen = 0;
    for (const Click& click : clicks)
        seen += (click.position - 560) / hop < frames ? 1 : 0;
    float clicksPerSecond = 0.0f;
    float cracklesPerSecond = 0.0f;
    ASSERT_TRUE(t.readStatistics(clicksPerSecond, cracklesPerSecond));
    // Per second and per channel, over the scanned stretch of every frame.
    EXPECT_FLOAT_EQ(clicksPerSecond, static_cast<float>(seen * rate / (frames * counted * 2.0)));
    EXPECT_EQ(cracklesPerSecond, 0.0f);
    EXPECT_GT(seen, 10);
    // The read cleared the counts.
    EXPECT_FALSE(t.readStatistics(clicksPerSecond, cracklesPerSecond));
    EXPECT_EQ(clicksPerSecond, 0.0f);

    // Crackle: isolated spikes in near-silence with click detection off. The predictor of such a
    // frame is about 1, 0, 0, ..., so each spike is one point in every frame whose scan covers it.
    auto crackleOwner = preparedEngine(1);
    Tindler& c = *crackleOwner;
    c.setParameter(Tindler::EnableTindle, 0.0f);
    auto rng = tindle::test::seededGenerator("crackle spikes");
    const Signal32 spikes = tindle::test::noise(rng, 1, 40 * hop, 1e-4f);
    std::vector<std::int32_t> positions;
    for (std::int32_t p = 1500; p < 38 * hop; p += 997)
    {
        spikes.channel(0)[p] = (p % 2 == 0) ? 0.5f : -0.5f;
        positions.push_back(p);
    }
    const std::int32_t crackleFrames = feed(c, spikes);
    // Frame k scans stream positions k hop .. k hop + frameLength - scanMargin - overlap.
    const std::int32_t scanLength = c.getFrameLength() - c.getScanMargin() - c.getOverlap();
    std::int32_t points = 0;
    for (std::int32_t k = 0; k < crackleFrames; ++k)
        for (const std::int32_t p : positions)
            points += (p >= k * hop && p < k * hop + scanLength) ? 1 : 0;
    ASSERT_TRUE(c.readStatistics(clicksPerSecond, cracklesPerSecond));
    EXPECT_EQ(clicksPerSecond, 0.0f);
    EXPECT_FLOAT_EQ(cracklesPerSecond, static_cast<float>(points * rate / (crackleFrames * counted * 1.0)));
    EXPECT_GT(points, 30);
}

// Automation and saved states pass settings on unclamped. A click length beyond the range acts as
// the longest the frame holds, and NaN or anything under one sample as one sample: the same
// samples come out as with those lengths set properly.
TEST(Restoration, SettingsOutsideTheirRangesActAsTheirEnds)
{
    const Damaged d = damagedMaterial(5, 2, 30000, {{0, 9000, 300}, {1, 15000, 40}, {0, 21000, 3}});
    // The input restored with one setting changed from its default.
    const auto restoreWith = [&](const Signal32& input, std::int32_t setting, float value)
    {
        auto t = preparedEngine(2);
        t->setParameter(setting, value);
        return processWhole(*t, input);
    };
    const auto withClickLength = [&](float length)
    { return restoreWith(d.damaged, Tindler::ClickLength, length); };
    const auto same = [](const Signal32& a, const Signal32& b)
    {
        for (std::int32_t c = 0; c < a.channelCount(); ++c)
            if (!std::equal(a.channel(c), a.channel(c) + a.length(), b.channel(c)))
                return false;
        return true;
    };
    float lowest = 0.0f;
    float longest = 0.0f;
    preparedEngine(1)->parameterRange(Tindler::ClickLength, lowest, longest);
    const Signal32 atLongest = withClickLength(longest);
    // 0.02 ms is 0.88 samples at 44.1 kHz: one sample.
    const Signal32 atOneSample = withClickLength(0.02f);
    ASSERT_FALSE(same(atLongest, atOneSample)) << "the material must tell the two lengths apart";
    EXPECT_TRUE(same(withClickLength(1.0e30f), atLongest));
    EXPECT_TRUE(same(withClickLength(std::numeric_limits<float>::infinity()), atLongest));
    EXPECT_TRUE(same(withClickLength(std::numeric_limits<float>::quiet_NaN()), atOneSample));
    EXPECT_TRUE(same(withClickLength(-5.0f), atOneSample));

    // A NaN crackle reduction takes nothing off, like 0 %; an infinite one silences every bin
    // it reaches, and the output stays finite.
    Signal32 crackly = d.damaged.clone();
    auto rng = tindle::test::seededGenerator("crackle settings");
    tindle::test::addCrackle(crackly, rng, 400.0, rate);
    const auto crackleWith = [&](float reduction)
    { return restoreWith(crackly, Tindler::CrackleReduction, reduction); };
    ASSERT_FALSE(same(crackleWith(0.0f), crackleWith(30.0f))) << "the material must have crackle";
    EXPECT_TRUE(same(crackleWith(std::numeric_limits<float>::quiet_NaN()), crackleWith(0.0f)));
    const Signal32 infinite = crackleWith(std::numeric_limits<float>::infinity());
    for (std::int32_t c = 0; c < infinite.channelCount(); ++c)
        EXPECT_TRUE(std::all_of(infinite.channel(c), infinite.channel(c) + infinite.length(),
                                [](float v) { return std::isfinite(v); }));
}
