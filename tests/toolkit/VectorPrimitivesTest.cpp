// Every element-wise primitive against a plain scalar loop, over aligned pointers and pointers one
// element off the 64-byte alignment, and lengths 0, 1, odd and large.

#include "support/TestSignals.h"
#include "toolkit/Ipp.h"
#include "toolkit/VectorLibrary.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <functional>
#include <vector>

namespace
{
constexpr int lengths[] = {0, 1, 2, 7, 17, 1023, 4099};

/** Seeded values in an ippMalloc'd array, offset from its alignment by 0 or 1 element. */
struct Buffer
{
    Buffer(int n, int offset, std::mt19937& rng, float lo)
        : base(static_cast<float*>(ippMalloc(2 * (n + 2) * static_cast<int>(sizeof(float)) + 64)))
        , data(base + offset)
    {
        std::uniform_real_distribution<float> dist(lo, 2.0f);
        for (int i = 0; i < 2 * (n + 2); ++i)
            base[i] = dist(rng);
    }
    ~Buffer() { ippFree(base); }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;
    std::vector<float> copy(int n) const { return {data, data + n}; }
    float* base;
    float* data;
};

/** Runs check for every length and both offsets, with source and destination misaligned apart. */
void forEachShape(const char* what, float lo, const std::function<void(int, Buffer&, Buffer&)>& check)
{
    auto rng = tindle::test::seededGenerator(what);
    for (const int n : lengths)
        for (const int offset : {0, 1})
        {
            SCOPED_TRACE(::testing::Message() << what << ", n " << n << ", offset " << offset);
            Buffer a(n, offset, rng, lo);
            Buffer b(n, 1 - offset, rng, lo);
            check(n, a, b);
        }
}
} // namespace

TEST(VectorPrimitives, ArithmeticAgreesWithScalarLoops)
{
    // In place: b = b op a. Results must be identical: each is a single IEEE operation.
    struct InPlace
    {
        const char* name;
        IppStatus (*primitive)(const Ipp32f*, Ipp32f*, int);
        float (*formula)(float, float);
        float lo; // the division's operands stay away from zero
    };
    const InPlace binary[] = {
        {"add", ippsAdd_32f_I, [](float b, float a) { return b + a; }, -2.0f},
        {"sub", ippsSub_32f_I, [](float b, float a) { return b - a; }, -2.0f},
        {"mul", ippsMul_32f_I, [](float b, float a) { return b * a; }, -2.0f},
        {"div", ippsDiv_32f_I, [](float b, float a) { return b / a; }, 0.25f},
    };
    for (const auto& op : binary)
        forEachShape(op.name, op.lo,
                     [&](int n, Buffer& a, Buffer& b)
                     {
                         const auto before = b.copy(n);
                         op.primitive(a.data, b.data, n);
                         for (int i = 0; i < n; ++i)
                             ASSERT_EQ(b.data[i], op.formula(before[static_cast<std::size_t>(i)], a.data[i]));
                     });

    // From a to b.
    struct Unary
    {
        const char* name;
        std::function<void(const float*, float*, int)> primitive;
        std::function<float(const float*, int, int)> formula; // (source, n, i)
        float lo;
    };
    const Unary unary[] = {
        {"abs", ippsAbs_32f, [](const float* s, int, int i) { return std::fabs(s[i]); }, -2.0f},
        {"sqrt", ippsSqrt_32f, [](const float* s, int, int i) { return std::sqrt(s[i]); }, 0.0f},
        {"flip", ippsFlip_32f, [](const float* s, int n, int i) { return s[n - 1 - i]; }, -2.0f},
        {"copy", ippsCopy_32f, [](const float* s, int, int i) { return s[i]; }, -2.0f},
        {"mulC", [](const float* s, float* d, int n) { ippsCopy_32f(s, d, n), ippsMulC_32f_I(-1.75f, d, n); },
         [](const float* s, int, int i) { return s[i] * -1.75f; }, -2.0f},
        // Strict tests with the level as replacement; the first sample sits on the level.
        {"threshold LT", [](const float* s, float* d, int n) { ippsThreshold_LT_32f(s, d, n, 0.5f); },
         [](const float* s, int, int i) { return s[i] < 0.5f ? 0.5f : s[i]; }, -2.0f},
        {"threshold GT",
         [](const float* s, float* d, int n) { ippsCopy_32f(s, d, n), ippsThreshold_GT_32f_I(d, n, -0.25f); },
         [](const float* s, int, int i) { return s[i] > -0.25f ? -0.25f : s[i]; }, -2.0f},
        {"magnitude",
         [](const float* s, float* d, int n)
         { ippsMagnitude_32fc(reinterpret_cast<const Ipp32fc*>(s), d, n); },
         [](const float* s, int, int i)
         { return std::sqrt(s[2 * i] * s[2 * i] + s[2 * i + 1] * s[2 * i + 1]); },
         -2.0f},
    };
    for (const auto& op : unary)
        forEachShape(op.name, op.lo,
                     [&](int n, Buffer& a, Buffer& b)
                     {
                         if (n > 0)
                             a.data[0] = 0.5f;
                         op.primitive(a.data, b.data, n);
                         for (int i = 0; i < n; ++i)
                             ASSERT_EQ(b.data[i], op.formula(a.data, n, i)) << i;
                     });

    // The norm sums in double: within one rounding to float of the exact root.
    forEachShape("norm", -2.0f,
                 [](int n, Buffer& a, Buffer&)
                 {
                     double sum = 0.0;
                     for (int i = 0; i < n; ++i)
                         sum += static_cast<double>(a.data[i]) * a.data[i];
                     float norm = -1.0f;
                     ippsNorm_L2_32f(a.data, n, &norm);
                     EXPECT_NEAR(norm, std::sqrt(sum), std::sqrt(sum) * 1e-7 + 1e-30);
                 });
    // Fills, byte copies and overlapping moves.
    std::vector<float> v(40);
    ippsSet_32f(3.5f, v.data(), 40);
    EXPECT_EQ(v, std::vector<float>(40, 3.5f));
    // Overlapping moves in both directions agree with a move through a copy.
    for (std::size_t i = 0; i < v.size(); ++i)
        v[i] = static_cast<float>(i);
    for (const auto& [from, to] : {std::pair{0, 3}, std::pair{5, 1}})
    {
        std::vector<float> expected = v;
        const std::vector<float> part(v.begin() + from, v.begin() + from + 30);
        std::copy(part.begin(), part.end(), expected.begin() + to);
        ippsMove_32f(v.data() + from, v.data() + to, 30);
        EXPECT_EQ(v, expected);
    }
    std::vector<float> bytes(8);
    ippsCopy_8u(reinterpret_cast<const Ipp8u*>(v.data()), reinterpret_cast<Ipp8u*>(bytes.data()), 32);
    EXPECT_EQ(bytes, std::vector<float>(v.begin(), v.begin() + 8));
    ippsZero_32f(v.data(), 40);
    EXPECT_EQ(v, std::vector<float>(40, 0.0f));
}

TEST(VectorPrimitives, ComplexAndWindow)
{
    forEachShape(
        "complex", -2.0f,
        [](int n, Buffer& a, Buffer& b)
        {
            auto* ac = reinterpret_cast<Ipp32fc*>(a.data);
            auto* bc = reinterpret_cast<Ipp32fc*>(b.data);
            std::vector<Ipp32fc> product(static_cast<std::size_t>(n));
            ippsMul_32fc(ac, bc, product.data(), n);
            for (int i = 0; i < n; ++i)
            {
                ASSERT_EQ(product[static_cast<std::size_t>(i)].re, ac[i].re * bc[i].re - ac[i].im * bc[i].im);
                ASSERT_EQ(product[static_cast<std::size_t>(i)].im, ac[i].re * bc[i].im + ac[i].im * bc[i].re);
            }
            ippsMul_32fc_I(ac, bc, n);
            for (int i = 0; i < n; ++i)
                ASSERT_EQ(bc[i].re, product[static_cast<std::size_t>(i)].re);
            // A null imaginary source means zeros.
            ippsRealToCplx_32f(a.data, nullptr, bc, n);
            for (int i = 0; i < n; ++i)
                ASSERT_TRUE(bc[i].re == a.data[i] && bc[i].im == 0.0f);
        });
    for (const int n : {3, 4, 17, 2048})
    {
        std::vector<float> w(static_cast<std::size_t>(n), 2.0f);
        ippsWinHamming_32f_I(w.data(), n);
        for (int i = 0; i < n; ++i)
            // One float rounding of the factor and one of the product.
            ASSERT_NEAR(w[static_cast<std::size_t>(i)],
                        2.0 * (0.54 - 0.46 * std::cos(2.0 * M_PI * i / (n - 1))), 4e-7);
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
    velmar::audio::startUpVectorLibrary();
    EXPECT_TRUE(velmar::audio::denormalsAreFlushed());

    // Denormal inputs and results both come out of the primitives as zeros.
    std::vector<float> tiny(64, FLT_MIN);
    std::vector<float> subnormal(64, FLT_MIN / 8.0f);
    ippsMulC_32f_I(0.25f, tiny.data(), 64);
    ippsAdd_32f_I(subnormal.data(), tiny.data(), 64);
    EXPECT_EQ(tiny, std::vector<float>(64, 0.0f));
}
