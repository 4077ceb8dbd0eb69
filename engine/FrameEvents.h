#pragma once

#include "toolkit/MemoryPool.h"

#include <cstdint>

namespace velmar::audio
{

/** A stretch of one channel that the detector found damaged; positions are relative to the frame
    and end is one past the last damaged sample. peak is the highest envelope value seen since the
    previous click; nothing reads it. */
struct ClickRegion
{
    float peak;
    std::int32_t channel;
    std::int32_t start;
    std::int32_t end;
};

/** One sample of one channel marked as crackle. */
struct CracklePoint
{
    std::int32_t channel;
    std::int32_t position;
};

/** A frame's events and per-channel figures, in memory from the thread's pool. */
using ClickList = PoolVector<ClickRegion>;
using CrackleList = PoolVector<CracklePoint>;
using ChannelLevels = PoolVector<float>;
using ChannelPositions = PoolVector<std::int32_t>;

} // namespace velmar::audio
