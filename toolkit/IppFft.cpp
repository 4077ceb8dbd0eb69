// The real FFT on FFTW3 (single precision). FFTW's real-to-complex output is exactly the packed
// CCS layout: N/2 + 1 interleaved complex values with zero imaginary parts at both ends.
//
// Plans are made in place on a 64-byte-aligned buffer and run on the caller's work buffer, so
// that FFTW may use its aligned SIMD code whatever alignment the caller's arrays have (partitions
// and slices point into the middle of channels). Plans are kept for the life of the process, one
// pair per order (destroyed when the module unloads), and shared by every FFT set-up of that order: FFTW's
// planner is neither cheap nor thread-safe, while executing a plan on new arrays is both.

#include "toolkit/Ipp.h"

#include "toolkit/MemoryPool.h"

#include <fftw3.h>

#include <array>
#include <cstring>
#include <mutex>
#include <new>

namespace
{
constexpr int maxOrder = 27;

struct PlanPair
{
    fftwf_plan forward = nullptr;
    fftwf_plan inverse = nullptr;
};

// Destroyed with the module: a host that unloads the plug-in would otherwise leave the plans
// behind in FFTW, which stays loaded.
struct PlanCache
{
    std::array<PlanPair, maxOrder + 1> pairs;

    ~PlanCache()
    {
        for (const PlanPair& pair : pairs)
        {
            if (pair.forward != nullptr)
                fftwf_destroy_plan(pair.forward);
            if (pair.inverse != nullptr)
                fftwf_destroy_plan(pair.inverse);
        }
    }
};

std::mutex plannerLock;
PlanCache planCache;

const PlanPair& plansForOrder(int order)
{
    const std::lock_guard<std::mutex> lock(plannerLock);
    PlanPair& pair = planCache.pairs[static_cast<std::size_t>(order)];
    if (pair.forward == nullptr)
    {
        const int n = 1 << order;
        auto* buffer = fftwf_alloc_real(static_cast<std::size_t>(n + 2));
        auto* spectrum = reinterpret_cast<fftwf_complex*>(buffer);
        // Unbuffered algorithms: a buffered one allocates scratch on every execution, which the
        // audio path must not do. Should FFTW find none for a size, a buffered plan still serves.
        const unsigned flags = FFTW_ESTIMATE | FFTW_NO_BUFFERING;
        pair.forward = fftwf_plan_dft_r2c_1d(n, buffer, spectrum, flags);
        if (pair.forward == nullptr)
            pair.forward = fftwf_plan_dft_r2c_1d(n, buffer, spectrum, FFTW_ESTIMATE);
        pair.inverse = fftwf_plan_dft_c2r_1d(n, spectrum, buffer, flags);
        if (pair.inverse == nullptr)
            pair.inverse = fftwf_plan_dft_c2r_1d(n, spectrum, buffer, FFTW_ESTIMATE);
        fftwf_free(buffer);
    }
    return pair;
}
} // namespace

struct IppsFFTSpec_R_32f
{
    int order;
    int length;
    int flag;
    const PlanPair* plans;
};

IppStatus ippsFFTInitAlloc_R_32f(IppsFFTSpec_R_32f** plan, int order, int flag, IppHintAlgorithm /*hint*/)
{
    if (plan == nullptr)
        return ippStsNullPtrErr;
    if (order < 0 || order > maxOrder)
        return ippStsFftOrderErr;
    const PlanPair& plans = plansForOrder(order);
    *plan = velmar::audio::makePooled<IppsFFTSpec_R_32f>(IppsFFTSpec_R_32f{order, 1 << order, flag, &plans})
                .release();
    return ippStsNoErr;
}

IppStatus ippsFFTGetBufSize_R_32f(const IppsFFTSpec_R_32f* plan, int* bytes)
{
    // Room for the packed spectrum of N + 2 floats, which the transforms run in.
    *bytes = (plan->length + 2) * static_cast<int>(sizeof(Ipp32f));
    return ippStsNoErr;
}

IppStatus ippsFFTFwd_RToCCS_32f(const Ipp32f* src, Ipp32f* dst, const IppsFFTSpec_R_32f* plan, Ipp8u* work)
{
    const int n = plan->length;
    auto* buffer = reinterpret_cast<float*>(work);
    std::memcpy(buffer, src, static_cast<std::size_t>(n) * sizeof(float));
    fftwf_execute_dft_r2c(plan->plans->forward, buffer, reinterpret_cast<fftwf_complex*>(buffer));
    if ((plan->flag & IPP_FFT_DIV_FWD_BY_N) != 0)
    {
        const float scale = 1.0f / static_cast<float>(n);
        for (int i = 0; i < n + 2; ++i)
            buffer[i] *= scale;
    }
    std::memcpy(dst, buffer, static_cast<std::size_t>(n + 2) * sizeof(float));
    return ippStsNoErr;
}

IppStatus ippsFFTInv_CCSToR_32f(const Ipp32f* src, Ipp32f* dst, const IppsFFTSpec_R_32f* plan, Ipp8u* work)
{
    const int n = plan->length;
    auto* buffer = reinterpret_cast<float*>(work);
    // FFTW's complex-to-real transform overwrites its input, and the caller's spectrum must stay.
    std::memcpy(buffer, src, static_cast<std::size_t>(n + 2) * sizeof(float));
    fftwf_execute_dft_c2r(plan->plans->inverse, reinterpret_cast<fftwf_complex*>(buffer), buffer);
    if ((plan->flag & IPP_FFT_DIV_INV_BY_N) != 0)
    {
        const float scale = 1.0f / static_cast<float>(n);
        for (int i = 0; i < n; ++i)
            dst[i] = buffer[i] * scale;
    }
    else
        std::memcpy(dst, buffer, static_cast<std::size_t>(n) * sizeof(float));
    return ippStsNoErr;
}

IppStatus ippsFFTFree_R_32f(IppsFFTSpec_R_32f* plan)
{
    velmar::audio::PoolDeleter()(plan);
    return ippStsNoErr;
}
