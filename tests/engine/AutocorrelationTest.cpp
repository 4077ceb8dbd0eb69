#include "engine/Autocorrelation.h"
#include "support/TestSignals.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

using namespace velmar::audio;

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
                    // Floats widened, as the engine feeds it; a pointer one element off a
                    // 64-byte boundary as well as on one.
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
                        // Any order of summing n terms in double errs by at most about
                        // n * 2^-53 times the sum of their magnitudes; one product left out or
                        // taken twice errs by a whole term.
                        const double bound = static_cast<double>(n + 1) *
                                             std::numeric_limits<double>::epsilon() / 2.0 *
                                             static_cast<double>(magnitude);
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
