#include "toolkit/SignalMaths.h"

#include "toolkit/Ipp.h"

#include <cmath>

namespace velmar::audio
{

namespace
{
template <typename Operation>
Signal32 sampleWise(const Signal32& s, Operation operation)
{
    Signal32 result(s.channelCount(), s.length());
    for (std::int32_t c = 0; c < s.channelCount(); ++c)
        operation(s.channel(c), result.channel(c), s.length());
    return result;
}

template <typename InPlace>
Signal32 onClone(const Signal32& a, const Signal32& b, InPlace inPlace)
{
    Signal32 result = a.clone();
    for (std::int32_t c = 0; c < result.channelCount(); ++c)
        inPlace(b.channel(c), result.channel(c), result.length());
    return result;
}

Ipp32fc* asIpp(complex32* p)
{
    return reinterpret_cast<Ipp32fc*>(p);
}
} // namespace

Signal32 abs(const Signal32& s)
{
    return sampleWise(s, ippsAbs_32f);
}

Signal32 flip(const Signal32& s)
{
    return sampleWise(s, ippsFlip_32f);
}

Signal32 sqrt(const Signal32& s)
{
    return sampleWise(s, ippsSqrt_32f);
}

Signal32 lowerBound(const Signal32& s, float floor)
{
    return sampleWise(s, [floor](const float* src, float* dst, int n)
                      { ippsThreshold_LT_32f(src, dst, n, floor); });
}

Signal32 clip(const Signal32& s, float lower, float upper)
{
    return sampleWise(s,
                      [lower, upper](const float* src, float* dst, int n)
                      {
                          ippsThreshold_LT_32f(src, dst, n, lower);
                          ippsThreshold_GT_32f_I(dst, n, upper);
                      });
}

ComplexSignal32 toComplex(const Signal32& s)
{
    ComplexSignal32 result(s.channelCount(), s.length());
    for (std::int32_t c = 0; c < s.channelCount(); ++c)
        ippsRealToCplx_32f(s.channel(c), nullptr, asIpp(result.channel(c)), s.length());
    return result;
}

Signal32 magnitude(const ComplexSignal32& x)
{
    Signal32 result(x.channelCount(), x.length());
    for (std::int32_t c = 0; c < x.channelCount(); ++c)
        ippsMagnitude_32fc(asIpp(x.channel(c)), result.channel(c), x.length());
    return result;
}

Signal32 operator+(const Signal32& a, const Signal32& b)
{
    return onClone(a, b, ippsAdd_32f_I);
}

Signal32 operator-(const Signal32& a, const Signal32& b)
{
    return onClone(a, b, ippsSub_32f_I);
}

Signal32 operator*(const Signal32& a, const Signal32& b)
{
    return onClone(a, b, ippsMul_32f_I);
}

Signal32 operator/(const Signal32& a, const Signal32& b)
{
    return onClone(a, b, ippsDiv_32f_I);
}

Signal32 operator*(const Signal32& a, float k)
{
    Signal32 result = a.clone();
    for (std::int32_t c = 0; c < result.channelCount(); ++c)
        ippsMulC_32f_I(k, result.channel(c), result.length());
    return result;
}

ComplexSignal32 operator*(const ComplexSignal32& x, const ComplexSignal32& y)
{
    ComplexSignal32 result = x.clone();
    for (std::int32_t c = 0; c < result.channelCount(); ++c)
        ippsMul_32fc_I(asIpp(y.channel(c)), asIpp(result.channel(c)), result.length());
    return result;
}

Signal32& operator+=(Signal32& a, const Signal32& b)
{
    for (std::int32_t c = 0; c < a.channelCount(); ++c)
        ippsAdd_32f_I(b.channel(c), a.channel(c), a.length());
    return a;
}

PoolVector<float> rms(const Signal32& s)
{
    PoolVector<float> levels(static_cast<std::size_t>(s.channelCount()), 0.0f);
    const double root = std::sqrt(static_cast<double>(static_cast<float>(s.length())));
    for (std::int32_t c = 0; c < s.channelCount(); ++c)
    {
        float norm = 0.0f;
        ippsNorm_L2_32f(s.channel(c), s.length(), &norm);
        levels[static_cast<std::size_t>(c)] = static_cast<float>(static_cast<double>(norm) / root);
    }
    return levels;
}

Signal32 hammingWindow(std::int32_t n)
{
    Signal32 window(1, n);
    window.fill(1.0f);
    ippsWinHamming_32f_I(window.channel(0), n);
    return window;
}

} // namespace velmar::audio
