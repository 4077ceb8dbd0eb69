#include "toolkit/SignalMaths.h"
#include "support/TestSignals.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace velmar::audio;

TEST(SignalMaths, SampleWiseFunctionsMakeNewBlocks)
{
    Signal32 s(2, 4);
    const float values[2][4] = {{-0.5f, 0.25f, 7.0f, -4.0f}, {0.0f, 1.0f, -9.0f, 2.25f}};
    for (std::int32_t c = 0; c < 2; ++c)
        for (std::int32_t i = 0; i < 4; ++i)
            s.channel(c)[i] = values[c][i];

    const Signal32 clipped = clip(s, 0.0f, 1.0f);
    EXPECT_EQ(tindle::test::samples(clipped, 0), (std::vector<float>{0.0f, 0.25f, 1.0f, 0.0f}));
    EXPECT_EQ(tindle::test::samples(lowerBound(s, 0.5f), 1), (std::vector<float>{0.5f, 1.0f, 0.5f, 2.25f}));
    EXPECT_EQ(tindle::test::samples(abs(s), 1), (std::vector<float>{0.0f, 1.0f, 9.0f, 2.25f}));
    EXPECT_EQ(tindle::test::samples(flip(s), 0), (std::vector<float>{-4.0f, 7.0f, 0.25f, -0.5f}));
    EXPECT_EQ(tindle::test::samples(sqrt(abs(s)), 1), (std::vector<float>{0.0f, 1.0f, 3.0f, 1.5f}));
    EXPECT_FALSE(clipped.sharesBlockWith(s));
    EXPECT_EQ(s.channel(0)[2], 7.0f);

    const ComplexSignal32 x = toComplex(s);
    EXPECT_EQ(x.channel(1)[2].re, -9.0f);
    EXPECT_EQ(x.channel(1)[2].im, 0.0f);
    EXPECT_EQ(tindle::test::samples(magnitude(x), 0), tindle::test::samples(abs(s), 0));

    // An empty operand gives a block with no channels and no samples, not an empty handle.
    const Signal32 empty;
    for (const Signal32& r : {abs(empty), flip(empty), sqrt(empty), lowerBound(empty, 0.0f),
                              clip(empty, 0.0f, 1.0f), magnitude(ComplexSignal32())})
    {
        EXPECT_FALSE(r.isEmpty());
        EXPECT_EQ(r.length(), 0);
        EXPECT_EQ(r.channelCount(), 0);
    }
    EXPECT_FALSE(toComplex(empty).isEmpty());
}

TEST(SignalMaths, BinaryOperatorsCloneTheLeftOperand)
{
    auto rng = tindle::test::seededGenerator("operators");
    const Signal32 a = tindle::test::noise(rng, 2, 33, 1.0f);
    // The right operand may be longer and wider: it is read at the left one's indices.
    Signal32 b = tindle::test::noise(rng, 3, 40, 1.0f);
    for (std::int32_t c = 0; c < 3; ++c)
        for (std::int32_t i = 0; i < 40; ++i)
            b.channel(c)[i] += b.channel(c)[i] >= 0.0f ? 0.5f : -0.5f; // away from zero for the quotient

    const Signal32 sum = a + b;
    const Signal32 difference = a - b;
    const Signal32 product = a * b;
    const Signal32 quotient = a / b;
    const Signal32 scaled = a * 3.0f;
    ASSERT_EQ(sum.channelCount(), 2);
    ASSERT_EQ(sum.length(), 33);
    for (std::int32_t c = 0; c < 2; ++c)
        for (std::int32_t i = 0; i < 33; ++i)
        {
            const float x = a.channel(c)[i];
            const float y = b.channel(c)[i];
            ASSERT_EQ(sum.channel(c)[i], x + y);
            ASSERT_EQ(difference.channel(c)[i], x - y);
            ASSERT_EQ(product.channel(c)[i], x * y);
            ASSERT_EQ(quotient.channel(c)[i], x / y);
            ASSERT_EQ(scaled.channel(c)[i], x * 3.0f);
        }

    ComplexSignal32 x(1, 2);
    ComplexSignal32 y(1, 2);
    x.channel(0)[0] = {1.0f, 2.0f};
    x.channel(0)[1] = {0.0f, 1.0f};
    y.channel(0)[0] = {3.0f, -1.0f};
    y.channel(0)[1] = {0.0f, 1.0f};
    const ComplexSignal32 z = x * y;
    EXPECT_EQ(z.channel(0)[0].re, 5.0f);
    EXPECT_EQ(z.channel(0)[0].im, 5.0f);
    EXPECT_EQ(z.channel(0)[1].re, -1.0f);
    EXPECT_EQ(z.channel(0)[1].im, 0.0f);
    EXPECT_EQ(x.channel(0)[0].re, 1.0f);

    // += works on the block itself, which every handle sees.
    Signal32 target = a.clone();
    const Signal32 alias = target;
    target += b;
    EXPECT_EQ(alias.channel(1)[5], a.channel(1)[5] + b.channel(1)[5]);
}

TEST(SignalMaths, RmsAndHammingWindow)
{
    Signal32 s(3, 1000);
    s.fill(0.0f);
    for (std::int32_t i = 0; i < 1000; ++i)
    {
        s.channel(1)[i] = -0.3f;
        s.channel(2)[i] = (i % 2 == 0) ? 1.0f : -1.0f;
    }
    const PoolVector<float> levels = rms(s);
    ASSERT_EQ(levels.size(), 3u);
    EXPECT_EQ(levels[0], 0.0f);
    EXPECT_FLOAT_EQ(levels[1], 0.3f);
    EXPECT_FLOAT_EQ(levels[2], 1.0f);
    EXPECT_TRUE(rms(Signal32()).empty());

    const Signal32 w = hammingWindow(2048);
    ASSERT_EQ(w.channelCount(), 1);
    ASSERT_EQ(w.length(), 2048);
    EXPECT_NEAR(w.channel(0)[0], 0.08f, 1e-7f);
    EXPECT_EQ(w.channel(0)[0], w.channel(0)[2047]);
}
