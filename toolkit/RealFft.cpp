#include "toolkit/RealFft.h"

#include "toolkit/ScalarHelpers.h"

namespace velmar::audio
{

RealFft::~RealFft()
{
    release();
}

void RealFft::release()
{
    if (plan != nullptr)
        ippsFFTFree_R_32f(plan);
    if (work != nullptr)
        ippsFree(work);
    plan = nullptr;
    work = nullptr;
}

void RealFft::prepare(std::int32_t newSize)
{
    release();
    size = newSize;
    ippsFFTInitAlloc_R_32f(&plan, floorLog2(size), IPP_FFT_NODIV_BY_ANY, ippAlgHintFast);
    int bytes = 0;
    ippsFFTGetBufSize_R_32f(plan, &bytes);
    work = ippsMalloc_8u(bytes);
}

ComplexSignal32 RealFft::forward(const Signal32& s)
{
    if (s.length() != size)
        prepare(s.length());
    ComplexSignal32 spectrum(s.channelCount(), size / 2 + 1);
    for (std::int32_t c = 0; c < s.channelCount(); ++c)
        ippsFFTFwd_RToCCS_32f(s.channel(c), reinterpret_cast<Ipp32f*>(spectrum.channel(c)), plan, work);
    return spectrum;
}

Signal32 RealFft::inverse(const ComplexSignal32& x)
{
    if (x.length() != size / 2 + 1)
        prepare(2 * x.length() - 2);
    Signal32 result(x.channelCount(), size);
    for (std::int32_t c = 0; c < x.channelCount(); ++c)
        ippsFFTInv_CCSToR_32f(reinterpret_cast<const Ipp32f*>(x.channel(c)), result.channel(c), plan, work);
    return result;
}

void RealFft::forward(const float* samples, complex32* spectrum, std::int32_t samplesLength)
{
    if (samplesLength != size)
        prepare(samplesLength);
    ippsFFTFwd_RToCCS_32f(samples, reinterpret_cast<Ipp32f*>(spectrum), plan, work);
}

void RealFft::inverse(const complex32* spectrum, float* samples, std::int32_t samplesLength)
{
    if (samplesLength != size)
        prepare(samplesLength);
    ippsFFTInv_CCSToR_32f(reinterpret_cast<const Ipp32f*>(spectrum), samples, plan, work);
}

} // namespace velmar::audio
