// Element-wise loops over float arrays, written plainly so that the compiler vectorises them.
// Each loop is compiled twice, for baseline x86-64 and for AVX2, and the loader picks one per
// processor: the same operations in the same order, twice as wide, so the same bits.

#include "toolkit/Ipp.h"

#include <cmath>
#include <cstring>

#define VECTOR_CLONES __attribute__((target_clones("avx2", "default")))

IppStatus ippsMove_32f(const Ipp32f* src, Ipp32f* dst, int n)
{
    if (n > 0)
        std::memmove(dst, src, static_cast<std::size_t>(n) * sizeof(Ipp32f));
    return ippStsNoErr;
}

VECTOR_CLONES IppStatus ippsFlip_32f(const Ipp32f* src, Ipp32f* dst, int n)
{
    for (int i = 0; i < n; ++i)
        dst[i] = src[n - 1 - i];
    return ippStsNoErr;
}

VECTOR_CLONES IppStatus ippsAdd_32f_I(const Ipp32f* src, Ipp32f* srcDst, int n)
{
    for (int i = 0; i < n; ++i)
        srcDst[i] += src[i];
    return ippStsNoErr;
}

VECTOR_CLONES IppStatus ippsSub_32f_I(const Ipp32f* src, Ipp32f* srcDst, int n)
{
    for (int i = 0; i < n; ++i)
        srcDst[i] -= src[i];
    return ippStsNoErr;
}

VECTOR_CLONES IppStatus ippsMul_32f_I(const Ipp32f* src, Ipp32f* srcDst, int n)
{
    for (int i = 0; i < n; ++i)
        srcDst[i] *= src[i];
    return ippStsNoErr;
}

VECTOR_CLONES IppStatus ippsDiv_32f_I(const Ipp32f* src, Ipp32f* srcDst, int n)
{
    for (int i = 0; i < n; ++i)
        srcDst[i] /= src[i];
    return ippStsNoErr;
}

VECTOR_CLONES IppStatus ippsMulC_32f_I(Ipp32f value, Ipp32f* srcDst, int n)
{
    for (int i = 0; i < n; ++i)
        srcDst[i] *= value;
    return ippStsNoErr;
}

VECTOR_CLONES IppStatus ippsAbs_32f(const Ipp32f* src, Ipp32f* dst, int n)
{
    for (int i = 0; i < n; ++i)
        dst[i] = std::fabs(src[i]);
    return ippStsNoErr;
}

VECTOR_CLONES IppStatus ippsSqrt_32f(const Ipp32f* src, Ipp32f* dst, int n)
{
    for (int i = 0; i < n; ++i)
        dst[i] = std::sqrt(src[i]);
    return ippStsNoErr;
}

VECTOR_CLONES IppStatus ippsNorm_L2_32f(const Ipp32f* src, int n, Ipp32f* norm)
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
    *norm = static_cast<Ipp32f>(std::sqrt(sum));
    return ippStsNoErr;
}

VECTOR_CLONES IppStatus ippsThreshold_LT_32f(const Ipp32f* src, Ipp32f* dst, int n, Ipp32f level)
{
    for (int i = 0; i < n; ++i)
        dst[i] = src[i] < level ? level : src[i];
    return ippStsNoErr;
}

VECTOR_CLONES IppStatus ippsThreshold_GT_32f_I(Ipp32f* srcDst, int n, Ipp32f level)
{
    for (int i = 0; i < n; ++i)
        srcDst[i] = srcDst[i] > level ? level : srcDst[i];
    return ippStsNoErr;
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

VECTOR_CLONES IppStatus ippsMagnitude_32fc(const Ipp32fc* src, Ipp32f* dst, int n)
{
    for (int i = 0; i < n; ++i)
        dst[i] = std::sqrt(src[i].re * src[i].re + src[i].im * src[i].im);
    return ippStsNoErr;
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

VECTOR_CLONES IppStatus ippsMul_32fc(const Ipp32fc* a, const Ipp32fc* b, Ipp32fc* dst, int n)
{
    for (int i = 0; i < n; ++i)
    {
        const Ipp32f re = a[i].re * b[i].re - a[i].im * b[i].im;
        const Ipp32f im = a[i].re * b[i].im + a[i].im * b[i].re;
        dst[i].re = re;
        dst[i].im = im;
    }
    return ippStsNoErr;
}

VECTOR_CLONES IppStatus ippsMul_32fc_I(const Ipp32fc* src, Ipp32fc* srcDst, int n)
{
    return ippsMul_32fc(srcDst, src, srcDst, n);
}
