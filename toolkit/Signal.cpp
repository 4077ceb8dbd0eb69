#include "toolkit/Signal.h"

namespace velmar::audio
{

namespace
{
void copySamples(const float* src, float* dst, std::int32_t n)
{
    ippsCopy_32f(src, dst, n);
}

void copySamples(const complex32* src, complex32* dst, std::int32_t n)
{
    ippsCopy_8u(reinterpret_cast<const Ipp8u*>(src), reinterpret_cast<Ipp8u*>(dst),
                n * static_cast<std::int32_t>(sizeof(complex32)));
}

void setSamples(float value, float* dst, std::int32_t n)
{
    ippsSet_32f(value, dst, n);
}

void setSamples(complex32 value, complex32* dst, std::int32_t n)
{
    for (std::int32_t i = 0; i < n; ++i)
        dst[i] = value;
}
} // namespace

template <typename T>
SignalData<T>::SignalData(std::int32_t channelCount, std::int32_t sampleCount)
    : length(sampleCount)
    , channels(static_cast<std::size_t>(channelCount > 0 ? channelCount : 0), nullptr)
{
    const auto bytes = static_cast<long long>(sampleCount) * static_cast<long long>(sizeof(T));
    for (auto& buffer : channels)
        buffer = static_cast<T*>(ippMalloc(static_cast<int>(bytes)));
}

template <typename T>
SignalData<T>::~SignalData()
{
    for (auto* buffer : channels)
        ippFree(buffer);
}

template <typename T>
BasicSignal<T>::BasicSignal(std::int32_t channelCount, std::int32_t length)
    : data(std::allocate_shared<SignalData<T>>(PoolAllocator<SignalData<T>>(), channelCount, length))
{
}

template <typename T>
BasicSignal<T> BasicSignal<T>::clone() const
{
    if (isEmpty())
        return {};
    BasicSignal copy(channelCount(), length());
    for (std::int32_t c = 0; c < channelCount(); ++c)
        copySamples(channel(c), copy.channel(c), length());
    return copy;
}

template <typename T>
BasicSignal<T> BasicSignal<T>::slice(std::int32_t start, std::int32_t sliceLength) const
{
    BasicSignal part(channelCount(), sliceLength);
    for (std::int32_t c = 0; c < channelCount(); ++c)
        copySamples(channel(c) + start, part.channel(c), sliceLength);
    return part;
}

template <typename T>
void BasicSignal<T>::fill(T value) const
{
    for (std::int32_t c = 0; c < channelCount(); ++c)
        setSamples(value, channel(c), length());
}

template struct SignalData<float>;
template struct SignalData<complex32>;
template class BasicSignal<float>;
template class BasicSignal<complex32>;

} // namespace velmar::audio
