#pragma once

#include "toolkit/Signal.h"

#include <algorithm>
#include <cstdint>
#include <list>
#include <type_traits>

namespace velmar::audio
{

/** A sample-accurate FIFO of signal blocks. Blocks of any length go in; any number of samples can
    be read without consuming them (peek), read and consumed (pop) or consumed unread (discard).
    push() stores a private clone, so the caller may go on writing to what it pushed. Nothing is
    kept contiguous: a read that spans blocks is stitched from the pieces. push, peek and pop
    allocate; the width of the stream is fixed by the first non-empty handle pushed. */
template <typename SignalType>
class SignalQueue
{
public:
    void push(const SignalType& s)
    {
        if (s.isEmpty())
            return;
        if (channels == -1)
            channels = s.channelCount();
        if (s.length() <= 0)
            return;
        blocks.push_back(s.clone());
        samplesHeld += s.length();
    }

    /** count samples from the read point, queue unchanged. Short of samples, the tail of the
        result stays undefined: callers check sampleCount() first. */
    SignalType peek(std::int32_t count) const { return read(*this, count); }

    /** count samples from the read point, which leave the queue. count must not exceed
        sampleCount(). */
    SignalType pop(std::int32_t count) { return read(*this, count); }

    /** count samples leave the queue unread. count must not exceed sampleCount(). */
    void discard(std::int32_t count)
    {
        std::int32_t remaining = count;
        while (remaining > 0)
        {
            const std::int32_t left = blocks.front().length() - readOffset;
            if (left > remaining)
            {
                readOffset += remaining;
                break;
            }
            blocks.pop_front();
            remaining -= left;
            readOffset = 0;
        }
        samplesHeld -= count;
    }

    void clear()
    {
        blocks.clear();
        samplesHeld = 0;
        readOffset = 0;
        channels = -1;
    }

    std::int64_t sampleCount() const noexcept { return samplesHeld; }
    std::int32_t channelCount() const noexcept { return channels; }
    std::int32_t headOffset() const noexcept { return readOffset; }
    std::size_t blockCount() const noexcept { return blocks.size(); }

private:
    // peek and pop share one walk over the blocks; only a non-const queue (pop) consumes.
    template <typename Queue>
    static SignalType read(Queue& queue, std::int32_t count)
    {
        constexpr bool consume = !std::is_const_v<Queue>;
        if (queue.channels < 1)
            return {};
        SignalType result(queue.channels, count);
        std::int32_t position = queue.readOffset;
        std::int32_t written = 0;
        auto block = queue.blocks.begin();
        while (count != 0 && block != queue.blocks.end())
        {
            const std::int32_t available = block->length() - position;
            const std::int32_t wanted = count - written;
            const std::int32_t taken = available > wanted ? wanted : available;
            for (std::int32_t c = 0; c < queue.channels; ++c)
                std::copy_n(block->channel(c) + position, taken, result.channel(c) + written);
            written += taken;
            if (available > wanted)
            {
                if constexpr (consume)
                    queue.readOffset = position + wanted;
                break;
            }
            if constexpr (consume)
            {
                block = queue.blocks.erase(block);
                queue.readOffset = 0;
            }
            else
                ++block;
            position = 0;
            if (available == wanted)
                break;
        }
        if constexpr (consume)
            queue.samplesHeld -= count;
        return result;
    }

    std::int64_t samplesHeld = 0;
    std::list<SignalType> blocks;
    std::int32_t readOffset = 0;
    std::int32_t channels = -1;
};

} // namespace velmar::audio
