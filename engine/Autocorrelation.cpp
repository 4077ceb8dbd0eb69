#include "engine/Autocorrelation.h"

#include <algorithm>

namespace velmar::audio
{

namespace
{
// Many lags per pass: each sample is loaded once for a whole block of products, and the block's
// running sums sit side by side in vector registers, enough of them that no add waits for the one
// before it. Each lag still adds its products in rising order of i. Where the processor has them,
// products and sums are fused (one rounding instead of two); the last bits of a lag may then differ
// from a processor without, far below the float precision of the coefficients made from them. The
// best block was measured per instruction set: 64 lags with AVX-512, 32 with AVX2, 24 with SSE2.
// Lags k0 .. k0 + block - 1 into out[0 .. block - 1].
template <std::int32_t block, bool fused>
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
        {
            if constexpr (fused)
                acc[j] = __builtin_fma(xi, partner[j], acc[j]);
            else
                acc[j] += xi * partner[j];
        }
    }
    // The shorter lags go on a few samples further, still in order.
    for (std::int32_t j = 0; j < block; ++j)
        for (std::int32_t i = common; i < length - k0 - j; ++i)
            acc[j] += x[i] * x[i + k0 + j];
    for (std::int32_t j = 0; j < block; ++j)
        out[j] = acc[j];
}

// Blocks of the full width; what is left at the end is done as one more full block that ends at
// the last lag, computing some lags twice (to the same bits), and fewer lags than a block as one
// full block into scratch: narrower blocks have too few sums in flight and are slower.
template <std::int32_t block, bool fused>
inline __attribute__((always_inline)) void autocorrelateBlocks(const double* x, std::int32_t length,
                                                               double* r, std::int32_t lags)
{
    if (lags < block)
    {
        double scratch[block];
        lagBlock<block, fused>(x, length, scratch, 0);
        std::copy(scratch, scratch + lags, r);
        return;
    }
    std::int32_t k0 = 0;
    for (; k0 + block <= lags; k0 += block)
        lagBlock<block, fused>(x, length, r + k0, k0);
    if (k0 < lags)
        lagBlock<block, fused>(x, length, r + lags - block, lags - block);
}

// GCC keeps to 256-bit vectors under AVX-512 unless told otherwise; clang has no such preference
// for a generic target and takes no such option in the attribute.
#if defined(__clang__)
#define AVX512_TARGET "avx512f,fma"
#else
#define AVX512_TARGET "avx512f,fma,prefer-vector-width=512"
#endif

__attribute__((target(AVX512_TARGET))) void autocorrelateAvx512(const double* x, std::int32_t length,
                                                                double* r, std::int32_t lags)
{
    autocorrelateBlocks<64, true>(x, length, r, lags);
}

__attribute__((target("avx2,fma"))) void autocorrelateAvx2(const double* x, std::int32_t length, double* r,
                                                           std::int32_t lags)
{
    autocorrelateBlocks<32, true>(x, length, r, lags);
}

void autocorrelateBaseline(const double* x, std::int32_t length, double* r, std::int32_t lags)
{
    autocorrelateBlocks<24, false>(x, length, r, lags);
}

using Kernel = void (*)(const double*, std::int32_t, double*, std::int32_t);

Kernel chooseKernel()
{
    if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("fma"))
        return autocorrelateAvx512;
    if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma"))
        return autocorrelateAvx2;
    return autocorrelateBaseline;
}

const Kernel kernel = chooseKernel();
} // namespace

void autocorrelate(const double* x, std::int32_t length, double* r, std::int32_t lags)
{
    kernel(x, length, r, lags);
}

} // namespace velmar::audio
