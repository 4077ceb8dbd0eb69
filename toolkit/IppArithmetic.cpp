// Element-wise loops over float arrays, written plainly so that the compiler vectorises them.
// Each loop is compiled twice, for baseline x86-64 and for AVX2, and the processor decides which
// runs: the same operations in the same order, twice as wide, so the same bits.

#include "toolkit/Ipp.h"

#include <cmath>
#include <cstring>

namespace
{
const bool hasAvx2 = __builtin_cpu_supports("avx2");

// The loop is inlined into both and vectorised for each one's instruction set.
template <auto loop, typename... Args>
__attribute__((target("avx2"))) void runAvx2(Args... args)
{
    loop(args...);
}

template <auto loop, typename... Args>
void runBaseline(Args... args)
{
    loop(args...);
}

template <auto loop, typename... Args>
IppStatus dispatch(Args... args)
{
    if (hasAvx2)
        runAvx2<loop>(args...);
    else
        runBaseline<loop>(args...);
    return ippStsNoErr;
}

inline __attribute__((always_inline)) void flip(const Ipp32f* src, Ipp32f* dst, int n)
{
    for (int i = 0; i < n; ++i)
        dst[i] = src[n - 1 - i];
}

inline __attribute__((always_inline)) void add(const Ipp32f* src, Ipp32f* srcDst, int n)
{
    for (int i = 0; i < n; ++i)
        srcDst[i] += src[i];
}

inline __attribute__((always_inline)) void subtract(const Ipp32f* src, Ipp32f* srcDst, int n)
{
    for (int i = 0; i < n; ++i)
        srcDst[i] -= src[i];
}

inline __attribute__((always_inline)) void multiply(const Ipp32f* src, Ipp32f* srcDst, int n)
{
    for (int i = 0; i < n; ++i)
        srcDst[i] *= src[i];
}

inline __attribute__((always_inline)) void divide(const Ipp32f* src, Ipp32f* srcDst, int n)
{
    for (int i = 0; i < n; ++i)
        srcDst[i] /= src[i];
}

inline __attribute__((always_inline)) void scale(Ipp32f value, Ipp32f* srcDst, int n)
{
    for (int i = 0; i < n; ++i)
        srcDst[i] *= value;
}

inline __attribute__((always_inline)) void absolute(const Ipp32f* src, Ipp32f* dst, int n)
{
    for (int i = 0; i < n; ++i)
        dst[i] = std::fabs(src[i]);
}

inline __attribute__((always_inline)) void squareRoot(const Ipp32f* src, Ipp32f* dst, int n)
{
    for (int i = 0; i < n; ++i)
        dst[i] = std::sqrt(src[i]);
}

inline __attribute__((always_inline)) void euclideanNorm(const Ipp32f* src, int n, Ipp32f* result)
{
    // Squares are summed in double, so that a frame of thousands of samples keeps its low bits,
    // in eight interleaved partial sums, so that the adds need not wait on each other.
    double sums[8] = {};
    int i = 0;
    for (; i + 8 <= n; i += 8)
        for (int q = 0; q < 8; ++q)
            sums[q] += static_cast<double>(src[i + q]) * static_cast<double>(src[i + q]);
    for (; i < n; ++i)
        sums[0] += static_cast<double>(src[i]) * static_cast<double>(src[i]);
    const double sum =
        ((sums[0] + sums[1]) + (sums[2] + sums[3])) + ((sums[4] + sums[5]) + (sums[6] + sums[7]));
    *result = static_cast<Ipp32f>(std::sqrt(sum));
}

inline __attribute__((always_inline)) void floorAt(const Ipp32f* src, Ipp32f* dst, int n, Ipp32f level)
{
    for (int i = 0; i < n; ++i)
        dst[i] = src[i] < level ? level : src[i];
}

inline __attribute__((always_inline)) void ceilingAt(Ipp32f* srcDst, int n, Ipp32f level)
{
    for (int i = 0; i < n; ++i)
        srcDst[i] = srcDst[i] > level ? level : srcDst[i];
}

inline __attribute__((always_inline)) void magnitude(const Ipp32fc* src, Ipp32f* dst, int n)
{
    for (int i = 0; i < n; ++i)
        dst[i] = std::sqrt(src[i].re * src[i].re + src[i].im * src[i].im);
}

inline __attribute__((always_inline)) void complexMultiply(const Ipp32fc* a, const Ipp32fc* b, Ipp32fc* dst,
                                                           int n)
{
    for (int i = 0; i < n; ++i)
    {
        const Ipp32f re = a[i].re * b[i].re - a[i].im * b[i].im;
        const Ipp32f im = a[i].re * b[i].im + a[i].im * b[i].re;
        dst[i].re = re;
        dst[i].im = im;
    }
}

} // namespace

IppStatus ippsMove_32f(const Ipp32f* src, Ipp32f* dst, int n)
{
    if (n > 0)
        std::memmove(dst, src, static_cast<std::size_t>(n) * sizeof(Ipp32f));
    return ippStsNoErr;
}

IppStatus ippsFlip_32f(const Ipp32f* src, Ipp32f* dst, int n)
{
    return dispatch<flip>(src, dst, n);
}

IppStatus ippsAdd_32f_I(const Ipp32f* src, Ipp32f* srcDst, int n)
{
    return dispatch<add>(src, srcDst, n);
}

IppStatus ippsSub_32f_I(const Ipp32f* src, Ipp32f* srcDst, int n)
{
    return dispatch<subtract>(src, srcDst, n);
}

IppStatus ippsMul_32f_I(const Ipp32f* src, Ipp32f* srcDst, int n)
{
    return dispatch<multiply>(src, srcDst, n);
}

IppStatus ippsDiv_32f_I(const Ipp32f* src, Ipp32f* srcDst, int n)
{
    return dispatch<divide>(src, srcDst, n);
}

IppStatus ippsMulC_32f_I(Ipp32f value, Ipp32f* srcDst, int n)
{
    return dispatch<scale>(value, srcDst, n);
}

IppStatus ippsAbs_32f(const Ipp32f* src, Ipp32f* dst, int n)
{
    return dispatch<absolute>(src, dst, n);
}

IppStatus ippsSqrt_32f(const Ipp32f* src, Ipp32f* dst, int n)
{
    return dispatch<squareRoot>(src, dst, n);
}

IppStatus ippsNorm_L2_32f(const Ipp32f* src, int n, Ipp32f* norm)
{
    return dispatch<euclideanNorm>(src, n, norm);
}

IppStatus ippsThreshold_LT_32f(const Ipp32f* src, Ipp32f* dst, int n, Ipp32f level)
{
    return dispatch<floorAt>(src, dst, n, level);
}

IppStatus ippsThreshold_GT_32f_I(Ipp32f* srcDst, int n, Ipp32f level)
{
    return dispatch<ceilingAt>(srcDst, n, level);
}

IppStatus ippsWinHamming_32f_I(Ipp32f* srcDst, int n)
{
    if (n < 3)
        return ippStsSizeErr;
    // The cosine's argument is formed in double: at frame lengths of thousands a float angle
    // would lose the window's symmetry.
    const double step = 2.0 * M_PI / static_cast<double>(n - 1);
    for (int i = 0; i < n; ++i)
        srcDst[i] *= static_cast<Ipp32f>(0.54 - 0.46 * std::cos(step * static_cast<double>(i)));
    return ippStsNoErr;
}

IppStatus ippsMagnitude_32fc(const Ipp32fc* src, Ipp32f* dst, int n)
{
    return dispatch<magnitude>(src, dst, n);
}

IppStatus ippsRealToCplx_32f(const Ipp32f* re, const Ipp32f* im, Ipp32fc* dst, int n)
{
    for (int i = 0; i < n; ++i)
    {
        dst[i].re = re != nullptr ? re[i] : 0.0f;
        dst[i].im = im != nullptr ? im[i] : 0.0f;
    }
    return ippStsNoErr;
}

IppStatus ippsMul_32fc(const Ipp32fc* a, const Ipp32fc* b, Ipp32fc* dst, int n)
{
    return dispatch<complexMultiply>(a, b, dst, n);
}

IppStatus ippsMul_32fc_I(const Ipp32fc* src, Ipp32fc* srcDst, int n)
{
    return ippsMul_32fc(srcDst, src, srcDst, n);
}
