// Every element-wise primitive against a plain scalar loop, over aligned pointers and pointers one
// element off the 64-byte alignment, and lengths 0, 1, odd and large.

#include "support/TestSignals.h"
#include "toolkit/Ipp.h"
#include "toolkit/VectorLibrary.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstring>
#include <functional>
#include <random>
#include <thread>
#include <vector>

namespace
{
constexpr int lengths[] = {0, 1, 2, 7, 17, 1023, 4099};
constexpr int offsets[] = {0, 1};

/** An ippMalloc'd array with room for an offset, filled with seeded values. */
struct Buffer
{
    Buffer(int n, int offset, std::mt19937& rng, float lo = -2.0f, float hi = 2.0f)
        : base(static_cast<float*>(ippMalloc((n + 2) * static_cast<int>(sizeof(float)) + 64)))
        , data(base + offset)
    {
        std::uniform_real_distribution<float> dist(lo, hi);
        for (int i = 0; i < n + 2; ++i)
            base[i] = dist(rng);
    }
    ~Buffer() { ippFree(base); }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    float* base;
    float* data;
};

std::vector<float> copyOf(const float* p, int n)
{
    return std::vector<float>(p, p + n);
}

/** Runs check(n, offset, rng) for every length and offset. */
void forEachShape(const char* what, const std::function<void(int, int, std::mt19937&)>& check)
{
    auto rng = tindle::test::seededGenerator(what);
    for (const int n : lengths)
        for (const int offset : offsets)
        {
            SCOPED_TRACE(::testing::Message() << what << " n " << n << " offset " << offset);
            check(n, offset, rng);
        }
}

/** An in-place binary primitive against its scalar formula; results must be identical. */
void checkInPlace(const char* what, IppStatus (*primitive)(const Ipp32f*, Ipp32f*, int),
                  const std::function<float(float, float)>& formula, float lo = -2.0f)
{
    forEachShape(what,
                 [&](int n, int offset, std::mt19937& rng)
                 {
                     Buffer a(n, offset, rng, lo);
                     Buffer b(n, 1 - offset, rng, lo);
                     const auto before = copyOf(b.data, n);
                     const auto operand = copyOf(a.data, n);
                     primitive(a.data, b.data, n);
                     for (int i = 0; i < n; ++i)
                         ASSERT_EQ(b.data[i], formula(before[static_cast<std::size_t>(i)],
                                                      operand[static_cast<std::size_t>(i)]));
                     EXPECT_EQ(copyOf(a.data, n), operand);
                 });
}
} // namespace

TEST(VectorPrimitives, InPlaceArithmetic)
{
    checkInPlace("add", ippsAdd_32f_I, [](float b, float a) { return b + a; });
    checkInPlace("sub", ippsSub_32f_I, [](float b, float a) { return b - a; });
    checkInPlace("mul", ippsMul_32f_I, [](float b, float a) { return b * a; });
    // Operands kept away from zero so that the quotient is finite.
    checkInPlace(
        "div", ippsDiv_32f_I, [](float b, float a) { return b / a; }, 0.25f);
    forEachShape("mulC",
                 [](int n, int offset, std::mt19937& rng)
                 {
                     Buffer b(n, offset, rng);
                     const auto before = copyOf(b.data, n);
                     ippsMulC_32f_I(-1.75f, b.data, n);
                     for (int i = 0; i < n; ++i)
                         ASSERT_EQ(b.data[i], before[static_cast<std::size_t>(i)] * -1.75f);
                 });
}

TEST(VectorPrimitives, UnaryAndMoves)
{
    forEachShape("unary",
                 [](int n, int offset, std::mt19937& rng)
                 {
                     Buffer src(n, offset, rng);
                     Buffer dst(n, 1 - offset, rng);
                     ippsAbs_32f(src.data, dst.data, n);
                     for (int i = 0; i < n; ++i)
                         ASSERT_EQ(dst.data[i], std::fabs(src.data[i]));
                     ippsFlip_32f(src.data, dst.data, n);
                     for (int i = 0; i < n; ++i)
                         ASSERT_EQ(dst.data[i], src.data[n - 1 - i]);
                     ippsCopy_32f(src.data, dst.data, n);
                     EXPECT_EQ(copyOf(dst.data, n), copyOf(src.data, n));
                     ippsSet_32f(3.5f, dst.data, n);
                     for (int i = 0; i < n; ++i)
                         ASSERT_EQ(dst.data[i], 3.5f);
                     ippsZero_32f(dst.data, n);
                     for (int i = 0; i < n; ++i)
                         ASSERT_EQ(dst.data[i], 0.0f);
                     ippsCopy_8u(reinterpret_cast<const Ipp8u*>(src.data), reinterpret_cast<Ipp8u*>(dst.data),
                                 n * static_cast<int>(sizeof(float)));
                     EXPECT_EQ(copyOf(dst.data, n), copyOf(src.data, n));

                     Buffer positive(n, offset, rng, 0.0f, 4.0f);
                     ippsSqrt_32f(positive.data, dst.data, n);
                     for (int i = 0; i < n; ++i)
                         ASSERT_EQ(dst.data[i], std::sqrt(positive.data[i]));
                 });

    // Move is also right when source and destination overlap, in either direction.
    std::vector<float> v(40);
    for (std::size_t i = 0; i < v.size(); ++i)
        v[i] = static_cast<float>(i);
    ippsMove_32f(v.data(), v.data() + 3, 30);
    for (int i = 0; i < 30; ++i)
        ASSERT_EQ(v[static_cast<std::size_t>(i + 3)], static_cast<float>(i));
    for (std::size_t i = 0; i < v.size(); ++i)
        v[i] = static_cast<float>(i);
    ippsMove_32f(v.data() + 5, v.data() + 1, 30);
    for (int i = 0; i < 30; ++i)
        ASSERT_EQ(v[static_cast<std::size_t>(i + 1)], static_cast<float>(i + 5));
}

TEST(VectorPrimitives, NormIsTheDoublePrecisionRootOfSquares)
{
    forEachShape("norm",
                 [](int n, int offset, std::mt19937& rng)
                 {
                     Buffer src(n, offset, rng);
                     double sum = 0.0;
                     for (int i = 0; i < n; ++i)
                         sum += static_cast<double>(src.data[i]) * static_cast<double>(src.data[i]);
                     float norm = -1.0f;
                     ippsNorm_L2_32f(src.data, n, &norm);
                     // One rounding to float of the exact root.
                     EXPECT_NEAR(static_cast<double>(norm), std::sqrt(sum), std::sqrt(sum) * 1e-7 + 1e-30);
                 });
}

TEST(VectorPrimitives, ThresholdsAreStrictAndReplaceByTheLevel)
{
    forEachShape("threshold",
                 [](int n, int offset, std::mt19937& rng)
                 {
                     Buffer src(n, offset, rng);
                     if (n > 0)
                         src.data[0] = 0.5f; // equal to the level: kept either way
                     Buffer dst(n, 1 - offset, rng);
                     ippsThreshold_LT_32f(src.data, dst.data, n, 0.5f);
                     for (int i = 0; i < n; ++i)
                         ASSERT_EQ(dst.data[i], src.data[i] < 0.5f ? 0.5f : src.data[i]);
                     const auto before = copyOf(src.data, n);
                     ippsThreshold_GT_32f_I(src.data, n, -0.25f);
                     for (int i = 0; i < n; ++i)
                         ASSERT_EQ(src.data[i], before[static_cast<std::size_t>(i)] > -0.25f
                                                    ? -0.25f
                                                    : before[static_cast<std::size_t>(i)]);
                 });
    const float nan = std::nanf("");
    float out = 0.0f;
    ippsThreshold_LT_32f(&nan, &out, 1, 0.0f); // NaN is not below the level
    EXPECT_TRUE(std::isnan(out));
}

TEST(VectorPrimitives, ComplexOperations)
{
    forEachShape("complex",
                 [](int n, int offset, std::mt19937& rng)
                 {
                     // Complex arrays as float buffers of twice the length; the offset is one float.
                     Buffer a(2 * n, 2 * offset, rng);
                     Buffer b(2 * n, 0, rng);
                     Buffer c(2 * n, 2 * (1 - offset), rng);
                     auto* ac = reinterpret_cast<Ipp32fc*>(a.data);
                     auto* bc = reinterpret_cast<Ipp32fc*>(b.data);
                     auto* cc = reinterpret_cast<Ipp32fc*>(c.data);

                     ippsMul_32fc(ac, bc, cc, n);
                     for (int i = 0; i < n; ++i)
                     {
                         ASSERT_EQ(cc[i].re, ac[i].re * bc[i].re - ac[i].im * bc[i].im);
                         ASSERT_EQ(cc[i].im, ac[i].re * bc[i].im + ac[i].im * bc[i].re);
                     }
                     ippsMul_32fc_I(ac, bc, n);
                     EXPECT_EQ(copyOf(b.data, 2 * n), copyOf(c.data, 2 * n));

                     Buffer mag(n, offset, rng);
                     ippsMagnitude_32fc(ac, mag.data, n);
                     for (int i = 0; i < n; ++i)
                         ASSERT_EQ(mag.data[i], std::sqrt(ac[i].re * ac[i].re + ac[i].im * ac[i].im));

                     // A null imaginary source means zeros.
                     ippsRealToCplx_32f(mag.data, nullptr, cc, n);
                     for (int i = 0; i < n; ++i)
                     {
                         ASSERT_EQ(cc[i].re, mag.data[i]);
                         ASSERT_EQ(cc[i].im, 0.0f);
                     }
                 });
}

TEST(VectorPrimitives, HammingWindow)
{
    for (const int n : {3, 4, 17, 2048})
    {
        std::vector<float> w(static_cast<std::size_t>(n), 2.0f);
        ippsWinHamming_32f_I(w.data(), n);
        for (int i = 0; i < n; ++i)
        {
            const double expected = 2.0 * (0.54 - 0.46 * std::cos(2.0 * M_PI * i / (n - 1)));
            // One float rounding of the factor and one of the product.
            ASSERT_NEAR(static_cast<double>(w[static_cast<std::size_t>(i)]), expected, 4e-7) << n << " " << i;
        }
        EXPECT_EQ(w.front(), w.back());
    }
}

TEST(VectorLibrary, StartUpFlushesDenormalsOnTheCallingThread)
{
    // Start from an FPU that keeps denormals, so that the test sees the start-up do its work.
    unsigned int saved = 0;
    ippSetFlushToZero(0, &saved);
    ippSetDenormAreZeros(0);
    EXPECT_FALSE(velmar::audio::denormalsAreFlushed());
    float denormal = FLT_MIN;
    const float half = 0.5f;
    ippsMulC_32f_I(half, &denormal, 1);
    EXPECT_EQ(std::fpclassify(denormal), FP_SUBNORMAL);

    velmar::audio::startUpVectorLibrary();
    EXPECT_TRUE(velmar::audio::denormalsAreFlushed());

    // Denormal inputs and results both come out as zeros from the primitives.
    std::vector<float> tiny(64, FLT_MIN);
    std::vector<float> subnormal(64, FLT_MIN / 8.0f);
    ippsMulC_32f_I(0.25f, tiny.data(), 64);
    ippsAdd_32f_I(subnormal.data(), tiny.data(), 64);
    for (const float x : tiny)
        ASSERT_EQ(x, 0.0f);

    // A later call keeps the first one's settings and does no more.
    velmar::audio::startUpVectorLibrary();
    EXPECT_TRUE(velmar::audio::denormalsAreFlushed());
}
