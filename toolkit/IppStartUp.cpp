#include "toolkit/Ipp.h"

#if defined(__SSE__) || defined(__x86_64__)
#include <xmmintrin.h>
#define TINDLE_HAS_MXCSR 1
#endif

namespace
{
// MXCSR bits: flush-to-zero, denormals-are-zero, and the underflow exception mask.
constexpr unsigned int flushToZeroBit = 0x8000u;
constexpr unsigned int denormalsAreZeroBit = 0x0040u;
constexpr unsigned int underflowMaskBit = 0x0800u;

#if defined(__aarch64__)
unsigned long long readFpcr()
{
    unsigned long long value = 0;
    asm volatile("mrs %0, fpcr" : "=r"(value));
    return value;
}

void writeFpcr(unsigned long long value)
{
    asm volatile("msr fpcr, %0" : : "r"(value));
}

// On AArch64 one bit flushes both denormal inputs and results.
constexpr unsigned long long fpcrFlushBit = 1ull << 24;
#endif
} // namespace

IppStatus ippInit()
{
    // The FFT library picks its own code path per plan; the element-wise loops are compiled for
    // the baseline of the target.
    return ippStsNoErr;
}

IppStatus ippSetFlushToZero(int value, unsigned int* savedState)
{
#if TINDLE_HAS_MXCSR
    const unsigned int csr = _mm_getcsr();
    if (savedState != nullptr)
        *savedState = csr & flushToZeroBit;
    _mm_setcsr(value != 0 ? (csr | flushToZeroBit | underflowMaskBit) : (csr & ~flushToZeroBit));
#elif defined(__aarch64__)
    const auto fpcr = readFpcr();
    if (savedState != nullptr)
        *savedState = (fpcr & fpcrFlushBit) != 0 ? 1u : 0u;
    writeFpcr(value != 0 ? (fpcr | fpcrFlushBit) : (fpcr & ~fpcrFlushBit));
#else
    (void)value;
    if (savedState != nullptr)
        *savedState = 0;
#endif
    return ippStsNoErr;
}

IppStatus ippSetDenormAreZeros(int value)
{
#if TINDLE_HAS_MXCSR
    const unsigned int csr = _mm_getcsr();
    _mm_setcsr(value != 0 ? (csr | denormalsAreZeroBit) : (csr & ~denormalsAreZeroBit));
#elif defined(__aarch64__)
    const auto fpcr = readFpcr();
    writeFpcr(value != 0 ? (fpcr | fpcrFlushBit) : (fpcr & ~fpcrFlushBit));
#else
    (void)value;
#endif
    return ippStsNoErr;
}

IppStatus ippSetNumThreads(int numThreads)
{
    // Every call runs on its caller's thread: there are no worker threads to configure.
    (void)numThreads;
    return ippStsNoErr;
}
