#pragma once

// The vector layer of the toolkit: flat functions over raw sample arrays, under the names and call
// shapes of Intel's Integrated Performance Primitives. Lengths count elements, never bytes (but for
// ippsMalloc_8u and ippsCopy_8u). A name ending in _I works in place on its last array argument.
// Nothing here allocates except the allocation calls themselves.

#include <cstdint>

using Ipp8u = std::uint8_t;
using Ipp32f = float;
using Ipp64f = double;

struct Ipp32fc
{
    Ipp32f re;
    Ipp32f im;
};

enum IppStatus : int
{
    ippStsNullPtrErr = -8,
    ippStsSizeErr = -6,
    ippStsMemAllocErr = -9,
    ippStsFftOrderErr = -15,
    ippStsNoErr = 0,
};

// Memory and fill.
void* ippMalloc(int bytes);
void ippFree(void* p);
Ipp8u* ippsMalloc_8u(int bytes);
void ippsFree(void* p);
IppStatus ippsSet_32f(Ipp32f value, Ipp32f* dst, int n);
IppStatus ippsZero_32f(Ipp32f* dst, int n);
IppStatus ippsCopy_32f(const Ipp32f* src, Ipp32f* dst, int n);
IppStatus ippsCopy_8u(const Ipp8u* src, Ipp8u* dst, int bytes);
