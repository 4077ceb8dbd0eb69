#pragma once

#include "toolkit/MemoryPool.h"
#include "toolkit/Signal.h"

#include <algorithm>
#include <cstdint>
#include <type_traits>
#include <utility>

namespace velmar::audio
{

/** A sample-accurate FIFO of signal blocks. Blocks of any length go in; any number of samples can
    be read without consuming them (peek), read and consumed (pop) or consumed unread (discard).
    push() copies the samples in, so the caller may go on writing to what it pushed. The width of
    the stream is fixed by the first non-empty handle pushed; later blocks are read at that width.

    The samples are held in one ring per channel that grows by doubling and is kept through clear(),
    so that a queue in steady use allocates only the signals that peek and pop return. Storage
    comes from the thread's memory pool. */
template <typename SignalType>
class SignalQueue
{
public:
    using Sample = std::remove_pointer_t<decltype(std::declval<const SignalType&>().channel(0))>;

    SignalQueue() = default;
    ~SignalQueue() { release(); }
    SignalQueue(const SignalQueue&) = delete;
    SignalQueue& operator=(const SignalQueue&) = delete;
    SignalQueue(SignalQueue&& other) noexcept { takeFrom(other); }
    SignalQueue& operator=(SignalQueue&& other) noexcept
    {
        if (this != &other)
        {
            release();
            takeFrom(other);
        }
        return *this;
    }

    void push(const SignalType& s)
    {
        if (s.isEmpty())
            return;
        if (channels == -1)
            channels = s.channelCount();
        const std::int64_t n = s.length();
        if (n <= 0)
            return;
        reserve(channels, held + n);
        const std::int32_t width = std::min(channels, s.channelCount());
        const std::int64_t tail = (head + held) & mask();
        const std::int64_t first = std::min(n, capacity - tail);
        for (std::int32_t c = 0; c < width; ++c)
        {
            std::copy_n(s.channel(c), first, rings[static_cast<std::size_t>(c)] + tail);
            std::copy_n(s.channel(c) + first, n - first, rings[static_cast<std::size_t>(c)]);
        }
        held += n;
    }

    /** count samples from the read point, queue unchanged. Short of samples, the tail of the
        result stays undefined: callers check sampleCount() first. */
    SignalType peek(std::int32_t count) const
    {
        if (channels < 1)
            return {};
        SignalType result(channels, count);
        copyOut(result, std::min<std::int64_t>(count, held));
        return result;
    }

    /** count samples from the read point, which leave the queue. count must not exceed
        sampleCount(). */
    SignalType pop(std::int32_t count)
    {
        if (channels < 1)
            return {};
        SignalType result = peek(count);
        discard(count);
        return result;
    }

    /** count samples leave the queue unread. count must not exceed sampleCount(). */
    void discard(std::int32_t count)
    {
        head = (head + count) & mask();
        held -= count;
        if (held == 0)
            head = 0;
    }

    /** Empties the queue and frees its width; the rings stay for the next stream. */
    void clear()
    {
        head = 0;
        held = 0;
        channels = -1;
    }

    /** Makes room for samples of channels, so that pushes up to that many allocate nothing. */
    void reserve(std::int32_t channelCount, std::int64_t samples)
    {
        if (samples <= capacity && static_cast<std::int32_t>(rings.size()) >= channelCount)
            return;
        grow(std::max(channelCount, static_cast<std::int32_t>(rings.size())), std::max(samples, capacity));
    }

    std::int64_t sampleCount() const noexcept { return held; }
    std::int32_t channelCount() const noexcept { return channels; }
    std::int64_t storedCapacity() const noexcept { return capacity; }

private:
    std::int64_t mask() const noexcept { return capacity - 1; }

    void copyOut(const SignalType& result, std::int64_t n) const
    {
        const std::int64_t first = std::min(n, capacity - head);
        const std::int32_t width = std::min(channels, static_cast<std::int32_t>(rings.size()));
        for (std::int32_t c = 0; c < width; ++c)
        {
            std::copy_n(rings[static_cast<std::size_t>(c)] + head, first, result.channel(c));
            std::copy_n(rings[static_cast<std::size_t>(c)], n - first, result.channel(c) + first);
        }
    }

    void grow(std::int32_t channelCount, std::int64_t samples)
    {
        std::int64_t newCapacity = 64;
        while (newCapacity < samples)
            newCapacity *= 2;
        PoolVector<Sample*> newRings(static_cast<std::size_t>(channelCount), nullptr);
        for (auto& ring : newRings)
            ring = static_cast<Sample*>(poolAllocate(static_cast<std::size_t>(newCapacity) * sizeof(Sample)));
        // The held samples move to the start of the new rings, in order.
        const std::int64_t first = std::min(held, capacity - head);
        for (std::size_t c = 0; c < rings.size(); ++c)
        {
            std::copy_n(rings[c] + head, first, newRings[c]);
            std::copy_n(rings[c], held - first, newRings[c] + first);
        }
        release();
        rings = std::move(newRings);
        capacity = newCapacity;
        head = 0;
    }

    void release() noexcept
    {
        for (auto* ring : rings)
            poolFree(ring);
        rings.clear();
    }

    void takeFrom(SignalQueue& other) noexcept
    {
        rings = std::move(other.rings);
        capacity = std::exchange(other.capacity, 0);
        head = std::exchange(other.head, 0);
        held = std::exchange(other.held, 0);
        channels = std::exchange(other.channels, -1);
        other.rings.clear();
    }

    PoolVector<Sample*> rings;
    std::int64_t capacity = 0; // a power of two, or 0
    std::int64_t head = 0;
    std::int64_t held = 0;
    std::int32_t channels = -1;
};

} // namespace velmar::audio
