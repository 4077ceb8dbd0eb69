#include "engine/Autocorrelation.h"
#include "engine/DotProduct.h"
#include "support/TestSignals.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

using namespace velmar::audio;

namespace
{
// Any order of summing n terms in double errs by at most about n * 2^-53 times the sum of their
// magnitudes; one product left out or taken twice errs by a whole term.
double summingBound(std::int32_t n, long double magnitude)
{
    return static_cast<double>(n + 1) * std::numeric_limits<double>::epsilon() / 2.0 *
           static_cast<double>(magnitude);
}
} // namespace

TEST(DotProduct, EveryKernelMatchesAPlainSumAtAnyCountAndAlignment)
{
    auto rng = tindle::test::seededGenerator("dot product");
    std::uniform_real_distribution<double> value(-1.0, 1.0);
    for (const auto kernel : {Kernel::plain, Kernel::avx2})
    {
        if (!kernelAvailable(kernel))
            continue;
        std::vector<std::int32_t> counts{239, 240, 241};
        for (std::int32_t n = 0; n <= 40; ++n)
            counts.push_back(n);
        for (const std::int32_t n : counts)
            for (const std::int32_t offset : {0, 1})
            {
                std::vector<double> u(static_cast<std::size_t>(n + 1));
                std::vector<double> v(static_cast<std::size_t>(n + 1));
                for (std::size_t i = 0; i < u.size(); ++i)
                {
                    u[i] = value(rng);
                    v[i] = value(rng);
                }
                long double exact = 0.0L;
                long double magnitude = 0.0L;
                for (std::int32_t j = 0; j < n; ++j)
                {
                    const long double product =
                        static_cast<long double>(u[static_cast<std::size_t>(j + offset)]) *
                        v[static_cast<std::size_t>(j)];
                    exact += product;
                    magnitude += std::fabs(product);
                }
                ASSERT_NEAR(dotProduct(u.data() + offset, v.data(), n, kernel), static_cast<double>(exact),
                            summingBound(n, magnitude))
                    << "kernel " << static_cast<int>(kernel) << " count " << n << " offset " << offset;
            }
    }
}

TEST(Autocorrelation, EveryKernelMatchesAPlainSumAtAnyLengthLagCountAndAlignment)
{
    auto rng = tindle::test::seededGenerator("autocorrelation");
    std::uniform_real_distribution<float> sample(-1.0f, 1.0f);
    const double sentinel = -12345.0;
    int kernelsRun = 0;
    for (const auto kernel : {Kernel::plain, Kernel::avx2})
    {
        if (!kernelAvailable(kernel))
            continue;
        ++kernelsRun;
        for (const std::int32_t length : {0, 1, 3, 17, 31, 64, 239, 241, 2048, 2051})
            for (const std::int32_t lags : {1, 2, 5, 24, 25, 31, 32, 33, 241, 300})
                for (const std::int32_t offset : {0, 1})
                {
                    // Floats widened, as the engine feeds it; from the buffer's own aligned
                    // start and from one element past it.
                    std::vector<double> buffer(static_cast<std::size_t>(length + 1));
                    for (auto& v : buffer)
                        v = static_cast<double>(sample(rng));
                    const double* x = buffer.data() + offset;
                    const std::int32_t n = length;
                    std::vector<double> r(static_cast<std::size_t>(lags + 1), sentinel);
                    autocorrelate(x, n, r.data(), lags, kernel);

                    for (std::int32_t k = 0; k < lags; ++k)
                    {
                        long double exact = 0.0L;
                        long double magnitude = 0.0L;
                        for (std::int32_t i = 0; i + k < n; ++i)
                        {
                            exact += static_cast<long double>(x[i]) * x[i + k];
                            magnitude += std::fabs(static_cast<long double>(x[i]) * x[i + k]);
                        }
                        const double bound = summingBound(n, magnitude);
                        ASSERT_NEAR(r[static_cast<std::size_t>(k)], static_cast<double>(exact), bound)
                            << "kernel " << static_cast<int>(kernel) << " length " << n << " lags " << lags
                            << " lag " << k << " offset " << offset;
                        if (k >= n)
                            ASSERT_EQ(r[static_cast<std::size_t>(k)], 0.0);
                    }
                    ASSERT_EQ(r[static_cast<std::size_t>(lags)], sentinel) << "wrote past the last lag";
                }
    }
    EXPECT_GE(kernelsRun, 1);
}

TEST(Autocorrelation, ARangeOfLagsHasTheBitsOfTheWholeAndTouchesNothingElse)
{
    auto rng = tindle::test::seededGenerator("lag range");
    std::uniform_real_distribution<float> sample(-1.0f, 1.0f);
    for (const auto kernel : {Kernel::plain, Kernel::avx2})
    {
        if (!kernelAvailable(kernel))
            continue;
        for (const std::int32_t length : {30, 2048})
        {
            std::vector<double> x(static_cast<std::size_t>(length));
            for (auto& v : x)
                v = static_cast<double>(sample(rng));
            std::vector<double> whole(300);
            autocorrelate(x.data(), length, whole.data(), 300, kernel);
            for (const std::int32_t first : {1, 5, 24, 25, 33})
                for (const std::int32_t end : {first + 1, first + 23, 241, 300})
                {
                    std::vector<double> part(300, -1.0);
                    autocorrelateFrom(x.data(), length, part.data(), first, end, kernel);
                    for (std::int32_t k = 0; k < 300; ++k)
                        ASSERT_EQ(part[static_cast<std::size_t>(k)],
                                  k >= first && k < end ? whole[static_cast<std::size_t>(k)] : -1.0)
                            << "kernel " << static_cast<int>(kernel) << " length " << length << " lags "
                            << first << " to " << end << " lag " << k;
                }
        }
    }
}
