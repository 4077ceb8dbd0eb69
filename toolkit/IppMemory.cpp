#include "toolkit/Ipp.h"

#include <cstdlib>
#include <cstring>

namespace
{
constexpr std::size_t blockAlignment = 64;
}

void* ippMalloc(int bytes)
{
    if (bytes < 1)
        return nullptr;
    // aligned_alloc wants a size that is a multiple of the alignment.
    const auto rounded =
        (static_cast<std::size_t>(bytes) + blockAlignment - 1) / blockAlignment * blockAlignment;
    return std::aligned_alloc(blockAlignment, rounded);
}

void ippFree(void* p)
{
    std::free(p);
}

Ipp8u* ippsMalloc_8u(int bytes)
{
    return static_cast<Ipp8u*>(ippMalloc(bytes));
}

void ippsFree(void* p)
{
    ippFree(p);
}

IppStatus ippsSet_32f(Ipp32f value, Ipp32f* dst, int n)
{
    for (int i = 0; i < n; ++i)
        dst[i] = value;
    return ippStsNoErr;
}

IppStatus ippsZero_32f(Ipp32f* dst, int n)
{
    return ippsSet_32f(0.0f, dst, n);
}

IppStatus ippsCopy_32f(const Ipp32f* src, Ipp32f* dst, int n)
{
    if (n > 0)
        std::memcpy(dst, src, static_cast<std::size_t>(n) * sizeof(Ipp32f));
    return ippStsNoErr;
}

IppStatus ippsCopy_8u(const Ipp8u* src, Ipp8u* dst, int bytes)
{
    if (bytes > 0)
        std::memcpy(dst, src, static_cast<std::size_t>(bytes));
    return ippStsNoErr;
}
