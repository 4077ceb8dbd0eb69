#pragma once

#include "toolkit/Ipp.h"
#include "toolkit/MemoryPool.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace velmar::audio
{

/** A complex sample: real part, then imaginary part, laid out like Ipp32fc. */
struct complex32
{
    float re;
    float im;
};
static_assert(sizeof(complex32) == sizeof(Ipp32fc), "complex32 must be passable as Ipp32fc");

/** One block of samples: a separately allocated, 64-byte-aligned buffer per channel, every channel
    of the same length, not interleaved. Allocates its buffers when made (contents undefined) and
    frees them when destroyed. A length of 0 leaves a null pointer per channel. */
template <typename T>
struct SignalData
{
    SignalData(std::int32_t channelCount, std::int32_t sampleCount);
    ~SignalData();
    SignalData(const SignalData&) = delete;
    SignalData& operator=(const SignalData&) = delete;

    std::int32_t length = 0;
    PoolVector<T*> channels;
};

/** A value-like handle to a shared SignalData block. Copying a handle shares the block; there is
    no copy-on-write, so writes through channel() and fill() are seen by every handle to the block.
    A handle without a block is the empty signal. Constructing, clone() and slice() allocate, from
    the thread's memory pool: the block, its shared count and its buffers. */
template <typename T>
class BasicSignal
{
public:
    BasicSignal() = default;
    BasicSignal(std::int32_t channelCount, std::int32_t length);

    std::int32_t length() const noexcept { return data ? data->length : 0; }
    std::int32_t channelCount() const noexcept
    {
        return data ? static_cast<std::int32_t>(data->channels.size()) : 0;
    }
    bool isEmpty() const noexcept { return data == nullptr; }

    /** The buffer of channel i; unchecked. */
    T* channel(std::int32_t i) const noexcept { return data->channels[static_cast<std::size_t>(i)]; }

    /** A new block with equal contents; the empty signal stays empty. */
    BasicSignal clone() const;

    /** A new block holding samples start .. start + length - 1 of every channel; unchecked. */
    BasicSignal slice(std::int32_t start, std::int32_t sliceLength) const;

    /** Sets every sample of every channel, in place. */
    void fill(T value) const;

    /** True when both handles refer to the same block. */
    bool sharesBlockWith(const BasicSignal& other) const noexcept { return data == other.data; }

private:
    std::shared_ptr<SignalData<T>> data;
};

using Signal32 = BasicSignal<float>;
using ComplexSignal32 = BasicSignal<complex32>;

extern template struct SignalData<float>;
extern template struct SignalData<complex32>;
extern template class BasicSignal<float>;
extern template class BasicSignal<complex32>;

} // namespace velmar::audio
