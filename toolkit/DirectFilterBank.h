#pragma once

#include "toolkit/Ipp.h"
#include "toolkit/MemoryPool.h"
#include "toolkit/Signal.h"

#include <cstdint>
#include <vector>

namespace velmar::audio
{

/** One FIR filter per response and channel, each continuing from call to call. The state of
    response r and channel c stands at index channels * r + c. Allocates its states when the
    responses are set, and every result. */
class DirectFilterBank
{
public:
    DirectFilterBank() = default;
    ~DirectFilterBank();
    DirectFilterBank(const DirectFilterBank&) = delete;
    DirectFilterBank& operator=(const DirectFilterBank&) = delete;

    /** Replaces every filter, with empty delay lines, by the taps of the given responses. */
    void setResponses(const PoolVector<Signal32>& taps);

    /** One output per response, each of the input's shape. */
    PoolVector<Signal32> process(const Signal32& input);

private:
    void release();

    PoolVector<IppsFIRState_32f*> states;
    std::int32_t channels = 0;
    std::int32_t responses = 0;
};

} // namespace velmar::audio
