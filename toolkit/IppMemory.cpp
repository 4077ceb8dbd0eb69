#include "toolkit/Ipp.h"

#include "toolkit/MemoryPool.h"

#include <cstring>

// Work buffers come from the thread's memory pool, 64-byte aligned.
void* ippMalloc(int bytes)
{
    if (bytes < 1)
        return nullptr;
    return velmar::audio::poolAllocate(static_cast<std::size_t>(bytes));
}

void ippFree(void* p)
{
    velmar::audio::poolFree(p);
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
