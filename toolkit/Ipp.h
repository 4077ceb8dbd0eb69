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

// Start-up.
IppStatus ippInit();
IppStatus ippSetFlushToZero(int value, unsigned int* savedState);
IppStatus ippSetDenormAreZeros(int value);
IppStatus ippSetNumThreads(int numThreads);

// Move.
IppStatus ippsMove_32f(const Ipp32f* src, Ipp32f* dst, int n);
IppStatus ippsFlip_32f(const Ipp32f* src, Ipp32f* dst, int n);

// Arithmetic; in the _I forms the last array is both source and destination.
IppStatus ippsAdd_32f_I(const Ipp32f* src, Ipp32f* srcDst, int n);
IppStatus ippsSub_32f_I(const Ipp32f* src, Ipp32f* srcDst, int n);
IppStatus ippsMul_32f_I(const Ipp32f* src, Ipp32f* srcDst, int n);
IppStatus ippsDiv_32f_I(const Ipp32f* src, Ipp32f* srcDst, int n);
IppStatus ippsMulC_32f_I(Ipp32f value, Ipp32f* srcDst, int n);
IppStatus ippsAbs_32f(const Ipp32f* src, Ipp32f* dst, int n);
IppStatus ippsSqrt_32f(const Ipp32f* src, Ipp32f* dst, int n);
IppStatus ippsNorm_L2_32f(const Ipp32f* src, int n, Ipp32f* norm);

// Thresholds: the tests are strict and the replacement is the level itself.
IppStatus ippsThreshold_LT_32f(const Ipp32f* src, Ipp32f* dst, int n, Ipp32f level);
IppStatus ippsThreshold_GT_32f_I(Ipp32f* srcDst, int n, Ipp32f level);

// Complex.
IppStatus ippsMagnitude_32fc(const Ipp32fc* src, Ipp32f* dst, int n);
IppStatus ippsRealToCplx_32f(const Ipp32f* re, const Ipp32f* im, Ipp32fc* dst, int n);
IppStatus ippsMul_32fc(const Ipp32fc* a, const Ipp32fc* b, Ipp32fc* dst, int n);
IppStatus ippsMul_32fc_I(const Ipp32fc* src, Ipp32fc* srcDst, int n);

// Window.
IppStatus ippsWinHamming_32f_I(Ipp32f* srcDst, int n);

// Real FFT of 2^order samples. The spectrum is packed as N/2 + 1 complex values (CCS): bin 0,
// bins 1 .. N/2 - 1, bin N/2, with zero imaginary parts at both ends.
struct IppsFFTSpec_R_32f;

enum
{
    IPP_FFT_DIV_FWD_BY_N = 1,
    IPP_FFT_DIV_INV_BY_N = 2,
    IPP_FFT_DIV_BY_SQRTN = 4,
    IPP_FFT_NODIV_BY_ANY = 8,
};

enum IppHintAlgorithm
{
    ippAlgHintNone = 0,
    ippAlgHintFast = 1,
    ippAlgHintAccurate = 2,
};

IppStatus ippsFFTInitAlloc_R_32f(IppsFFTSpec_R_32f** plan, int order, int flag, IppHintAlgorithm hint);
IppStatus ippsFFTGetBufSize_R_32f(const IppsFFTSpec_R_32f* plan, int* bytes);
IppStatus ippsFFTFwd_RToCCS_32f(const Ipp32f* src, Ipp32f* dst, const IppsFFTSpec_R_32f* plan, Ipp8u* work);
IppStatus ippsFFTInv_CCSToR_32f(const Ipp32f* src, Ipp32f* dst, const IppsFFTSpec_R_32f* plan, Ipp8u* work);
IppStatus ippsFFTFree_R_32f(IppsFFTSpec_R_32f* plan);

// Single-rate FIR filter that continues from call to call.
struct IppsFIRState_32f;

IppStatus ippsFIRInitAlloc_32f(IppsFIRState_32f** state, const Ipp32f* taps, int tapsLen,
                               const Ipp32f* delayLine);
IppStatus ippsFIR_32f(const Ipp32f* src, Ipp32f* dst, int n, IppsFIRState_32f* state);
IppStatus ippsFIRFree_32f(IppsFIRState_32f* state);
