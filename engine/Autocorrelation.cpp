#include "engine/Autocorrelation.h"

#include <algorithm>

#include <immintrin.h>

namespace velmar::audio
{

namespace
{
// ---- plain: any x86-64, lags in blocks ----

// Many lags per pass: each sample is loaded once for a whole block of products, and the block's
// running sums sit side by side in vector registers, enough of them that no add waits for the one
// before it. Each lag adds its products in rising order of i. Lags k0 .. k0 + block - 1 into
// out[0 .. block - 1].
template <std::int32_t block>
inline __attribute__((always_inline)) void lagBlock(const double* x, std::int32_t length, double* out,
                                                    std::int32_t k0)
{
    double acc[block] = {};
    // Up to here every lane of the block has its partner sample.
    const std::int32_t common = std::max<std::int32_t>(0, length - (k0 + block - 1));
    for (std::int32_t i = 0; i < common; ++i)
    {
        const double xi = x[i];
        const double* partner = x + i + k0;
        for (std::int32_t j = 0; j < block; ++j)
            acc[j] += xi * partner[j];
    }
    // The shorter lags go on a few samples further, still in order.
    for (std::int32_t j = 0; j < block; ++j)
        for (std::int32_t i = common; i < length - k0 - j; ++i)
            acc[j] += x[i] * x[i + k0 + j];
    for (std::int32_t j = 0; j < block; ++j)
        out[j] = acc[j];
}

// 24 lags per block was the fastest with SSE2's sixteen registers. What is left at the end is
// done as one more full block that ends at the last lag, computing some lags twice (to the same
// bits), and fewer lags than a block as one full block into scratch: narrower blocks have too few
// sums in flight and are slower.
void autocorrelatePlain(const double* x, std::int32_t length, double* r, std::int32_t firstLag,
                        std::int32_t endLag)
{
    constexpr std::int32_t block = 24;
    if (endLag - firstLag < block)
    {
        double scratch[block];
        lagBlock<block>(x, length, scratch, firstLag);
        std::copy(scratch, scratch + (endLag - firstLag), r + firstLag);
        return;
    }
    std::int32_t k0 = firstLag;
    for (; k0 + block <= endLag; k0 += block)
        lagBlock<block>(x, length, r + k0, k0);
    if (k0 < endLag)
        lagBlock<block>(x, length, r + endLag - block, endLag - block);
}

// ---- tiled: AVX2 with FMA, a tile of lags by samples in registers ----
//
// A vector holds four consecutive samples, so lag k's products x[i..i+3] * x[i+k..i+k+3] land in
// four lanes (sums over i of one residue mod 4, added together at the end). Take the lags
// k, k + 4, ..., k + 4(T - 1) together and four sample vectors a[u] = x[i + 4u] per step: the
// partner of a[u] for lag k + 4t is x[i + k + 4(t + u)], which depends on t + u only. So T + 3
// partner loads and four sample loads feed 4T fused multiply-adds, where one load per product
// would leave the loads, not the multipliers, setting the pace. T = 8 keeps eight sums, four
// samples and a partner in the sixteen registers.
constexpr int samplesPerStep = 4;

__attribute__((target("avx2,fma"))) inline double horizontalSum(__m256d v)
{
    const __m128d h = _mm_add_pd(_mm256_castpd256_pd128(v), _mm256_extractf128_pd(v, 1));
    return _mm_cvtsd_f64(_mm_add_sd(h, _mm_unpackhi_pd(h, h)));
}

// Lags k + 4t for t < T into out[t].
template <int T>
__attribute__((target("avx2,fma"))) inline void lagComb(const double* x, std::int32_t length, double* out,
                                                        std::int32_t k)
{
    constexpr int U = samplesPerStep;
    __m256d acc[T];
#pragma GCC unroll 8
    for (int t = 0; t < T; ++t)
        acc[t] = _mm256_setzero_pd();
    std::int32_t i = 0;
    // The step's furthest read, x[i + k + 4(T + U - 2) + 3], stays inside the signal.
    const std::int32_t stepEnd = length - k - 4 * (T + U - 2) - 3;
    for (; i < stepEnd; i += 4 * U)
    {
        __m256d a[U];
#pragma GCC unroll 4
        for (int u = 0; u < U; ++u)
            a[u] = _mm256_loadu_pd(x + i + 4 * u);
#pragma GCC unroll 16
        for (int s = 0; s < T + U - 1; ++s)
        {
            const __m256d partner = _mm256_loadu_pd(x + i + k + 4 * s);
#pragma GCC unroll 4
            for (int u = 0; u < U; ++u)
            {
                const int t = s - u;
                if (t >= 0 && t < T)
                    acc[t] = _mm256_fmadd_pd(a[u], partner, acc[t]);
            }
        }
    }
    // Each lag then runs on alone, four samples at a time while they all have partners, then one
    // at a time.
#pragma GCC unroll 8
    for (int t = 0; t < T; ++t)
    {
        const std::int32_t lag = k + 4 * t;
        std::int32_t j = i;
        __m256d v = acc[t];
        for (; j + lag + 3 < length; j += 4)
            v = _mm256_fmadd_pd(_mm256_loadu_pd(x + j), _mm256_loadu_pd(x + j + lag), v);
        double sum = horizontalSum(v);
        for (; j < length - lag; ++j)
            sum = __builtin_fma(x[j], x[j + lag], sum);
        out[t] = sum;
    }
}

// Lags k0 .. k0 + 4T - 1 as four combs, one per residue; those from endLag on are left out.
template <int T>
__attribute__((target("avx2,fma"))) void lagTile(const double* x, std::int32_t length, double* r,
                                                 std::int32_t endLag, std::int32_t k0)
{
    double comb[T];
    for (std::int32_t c = 0; c < 4; ++c)
    {
        lagComb<T>(x, length, comb, k0 + c);
        for (std::int32_t t = 0; t < T; ++t)
            if (k0 + c + 4 * t < endLag)
                r[k0 + c + 4 * t] = comb[t];
    }
}

__attribute__((target("avx2,fma"))) void autocorrelateTiled(const double* x, std::int32_t length, double* r,
                                                            std::int32_t firstLag, std::int32_t endLag)
{
    constexpr int T = 8;
    std::int32_t k0 = firstLag;
    for (; k0 + 4 * T <= endLag; k0 += 4 * T)
        lagTile<T>(x, length, r, endLag, k0);
    // The rest in a tile just wide enough: at most three lags are formed and dropped.
    switch ((endLag - k0 + 3) / 4)
    {
    case 1:
        lagTile<1>(x, length, r, endLag, k0);
        break;
    case 2:
        lagTile<2>(x, length, r, endLag, k0);
        break;
    case 3:
        lagTile<3>(x, length, r, endLag, k0);
        break;
    case 4:
        lagTile<4>(x, length, r, endLag, k0);
        break;
    case 5:
        lagTile<5>(x, length, r, endLag, k0);
        break;
    case 6:
        lagTile<6>(x, length, r, endLag, k0);
        break;
    case 7:
        lagTile<7>(x, length, r, endLag, k0);
        break;
    case 8:
        lagTile<8>(x, length, r, endLag, k0);
        break;
    default:
        break;
    }
}

} // namespace

void autocorrelate(const double* x, std::int32_t length, double* r, std::int32_t lags, Kernel kernel)
{
    autocorrelateFrom(x, length, r, 0, lags, kernel);
}

void autocorrelateFrom(const double* x, std::int32_t length, double* r, std::int32_t firstLag,
                       std::int32_t endLag, Kernel kernel)
{
    if (endLag <= firstLag)
        return;
    if (kernel == Kernel::avx2)
        autocorrelateTiled(x, length, r, firstLag, endLag);
    else
        autocorrelatePlain(x, length, r, firstLag, endLag);
}

} // namespace velmar::audio
