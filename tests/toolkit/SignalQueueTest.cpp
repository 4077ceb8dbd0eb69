#include "toolkit/SignalQueue.h"

#include <gtest/gtest.h>

#include <cstdint>

using namespace velmar::audio;

namespace
{
// A block whose sample i of channel c is first + i + 10000 c, so every read can be checked.
Signal32 counting(std::int32_t channels, std::int32_t length, std::int32_t first)
{
    Signal32 s(channels, length);
    for (std::int32_t c = 0; c < channels; ++c)
        for (std::int32_t i = 0; i < length; ++i)
            s.channel(c)[i] = static_cast<float>(first + i + 10000 * c);
    return s;
}

void expectCounting(const Signal32& s, std::int32_t channels, std::int32_t length, std::int32_t first)
{
    ASSERT_EQ(s.channelCount(), channels);
    ASSERT_EQ(s.length(), length);
    for (std::int32_t c = 0; c < channels; ++c)
        for (std::int32_t i = 0; i < length; ++i)
            ASSERT_EQ(s.channel(c)[i], static_cast<float>(first + i + 10000 * c)) << "c " << c << " i " << i;
}
} // namespace

TEST(SignalQueue, FreshQueueAndTheWidthRule)
{
    SignalQueue<Signal32> q;
    EXPECT_TRUE(q.peek(10).isEmpty());
    EXPECT_TRUE(q.pop(10).isEmpty());
    EXPECT_EQ(q.sampleCount(), 0);

    q.push(Signal32());
    EXPECT_EQ(q.channelCount(), -1);

    // A zero-length block fixes the width but stores nothing.
    q.push(Signal32(2, 0));
    EXPECT_EQ(q.channelCount(), 2);
    EXPECT_EQ(q.sampleCount(), 0);
    const Signal32 none = q.peek(0);
    EXPECT_EQ(none.channelCount(), 2);
    EXPECT_EQ(none.length(), 0);

    // Later pushes keep the first width.
    q.push(counting(1, 4, 0));
    EXPECT_EQ(q.channelCount(), 2);

    q.clear();
    EXPECT_EQ(q.channelCount(), -1);
    EXPECT_EQ(q.sampleCount(), 0);
}

TEST(SignalQueue, PartialReadsAcrossBlocks)
{
    SignalQueue<Signal32> q;
    q.push(counting(2, 5, 0));
    q.push(counting(2, 7, 5));
    EXPECT_EQ(q.sampleCount(), 12);

    // peek leaves everything in place and agrees with a later pop.
    expectCounting(q.peek(12), 2, 12, 0);
    EXPECT_EQ(q.sampleCount(), 12);

    expectCounting(q.pop(6), 2, 6, 0);
    EXPECT_EQ(q.sampleCount(), 6);
    expectCounting(q.pop(6), 2, 6, 6);
    EXPECT_EQ(q.sampleCount(), 0);

    const Signal32 nothing = q.pop(0);
    EXPECT_EQ(nothing.channelCount(), 2);
    EXPECT_EQ(nothing.length(), 0);
}

TEST(SignalQueue, PushStoresAClone)
{
    SignalQueue<Signal32> q;
    const Signal32 block = counting(1, 8, 100);
    q.push(block);
    block.fill(-1.0f);
    expectCounting(q.pop(8), 1, 8, 100);
}

TEST(SignalQueue, DiscardAcrossBlocks)
{
    SignalQueue<Signal32> q;
    for (std::int32_t b = 0; b < 4; ++b)
        q.push(counting(1, 3, 3 * b));
    q.discard(2);
    q.discard(5);
    EXPECT_EQ(q.sampleCount(), 5);
    expectCounting(q.pop(5), 1, 5, 7);
}

TEST(SignalQueue, OverlappedFramesByPeekAndDiscard)
{
    // The engine's pattern: read a whole frame, consume only the hop.
    SignalQueue<Signal32> q;
    std::int32_t pushed = 0;
    for (const std::int32_t length : {1000, 3000, 1, 4191})
    {
        q.push(counting(2, length, pushed));
        pushed += length;
    }
    ASSERT_EQ(q.sampleCount(), 8192);
    std::int32_t start = 0;
    while (q.sampleCount() >= 4096)
    {
        expectCounting(q.peek(4096), 2, 4096, start);
        q.discard(1024);
        start += 1024;
    }
    EXPECT_EQ(start, 5 * 1024);
}

TEST(SignalQueue, WrapsGrowsAndKeepsItsStorage)
{
    // Reads and writes that wrap around the ring, and growth while it holds wrapped samples.
    SignalQueue<Signal32> q;
    std::int32_t pushed = 0;
    std::int32_t popped = 0;
    for (int round = 0; round < 200; ++round)
    {
        const std::int32_t n = 1 + (round * 37) % 150;
        q.push(counting(2, n, pushed));
        pushed += n;
        const auto m = static_cast<std::int32_t>(std::min<std::int64_t>(q.sampleCount(), (round * 53) % 140));
        expectCounting(q.pop(m), 2, m, popped);
        popped += m;
        ASSERT_EQ(q.sampleCount(), pushed - popped);
    }
    expectCounting(q.peek(static_cast<std::int32_t>(q.sampleCount())), 2, pushed - popped, popped);

    // clear() forgets the stream and its width, and keeps the memory for the next one.
    const std::int64_t capacity = q.storedCapacity();
    q.clear();
    EXPECT_EQ(q.storedCapacity(), capacity);
    q.push(counting(1, 10, 500));
    EXPECT_EQ(q.channelCount(), 1);
    expectCounting(q.pop(10), 1, 10, 500);
    q.reserve(1, 4 * capacity);
    EXPECT_GE(q.storedCapacity(), 4 * capacity);
}
