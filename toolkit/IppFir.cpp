// Single-rate FIR filter. Input is processed in chunks through a buffer that holds the last
// tapsLen - 1 samples of history ahead of the chunk; the taps are stored reversed, so that output
// t of a chunk is a dot product with buffer[t .. t + tapsLen - 1]. A block of neighbouring outputs
// is summed side by side in registers, tap after tap: the compiler vectorises across the outputs,
// and every output still adds its products in tap order.

#include "toolkit/Ipp.h"

#include "toolkit/MemoryPool.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace
{
constexpr int chunkLength = 1024;

template <int block>
inline __attribute__((always_inline)) void firChunk(const float* buffer, const float* taps, int tapCount,
                                                    float* out, int count)
{
    int t0 = 0;
    for (; t0 + block <= count; t0 += block)
    {
        float acc[block] = {};
        for (int j = 0; j < tapCount; ++j)
        {
            const float tap = taps[j];
            const float* x = buffer + t0 + j;
            for (int q = 0; q < block; ++q)
                acc[q] += tap * x[q];
        }
        for (int q = 0; q < block; ++q)
            out[t0 + q] = acc[q];
    }
    for (; t0 < count; ++t0)
    {
        float acc = 0.0f;
        for (int j = 0; j < tapCount; ++j)
            acc += taps[j] * buffer[t0 + j];
        out[t0] = acc;
    }
}

// The block size was measured per instruction set: eight vector registers of outputs with AVX2,
// four with SSE2.
__attribute__((target("avx2"))) void firChunkAvx2(const float* buffer, const float* taps, int tapCount,
                                                  float* out, int count)
{
    firChunk<64>(buffer, taps, tapCount, out, count);
}

void firChunkBaseline(const float* buffer, const float* taps, int tapCount, float* out, int count)
{
    firChunk<16>(buffer, taps, tapCount, out, count);
}

const bool hasAvx2 = __builtin_cpu_supports("avx2");
} // namespace

struct IppsFIRState_32f
{
    int tapsLen = 0;
    velmar::audio::PoolVector<float> reversedTaps;
    velmar::audio::PoolVector<float> buffer; // tapsLen - 1 samples of history, then up to one chunk of input
};

IppStatus ippsFIRInitAlloc_32f(IppsFIRState_32f** state, const Ipp32f* taps, int tapsLen,
                               const Ipp32f* delayLine)
{
    if (state == nullptr || taps == nullptr)
        return ippStsNullPtrErr;
    if (tapsLen < 1)
        return ippStsSizeErr;
    auto* s = velmar::audio::makePooled<IppsFIRState_32f>().release();
    s->tapsLen = tapsLen;
    s->reversedTaps.assign(taps, taps + tapsLen);
    std::reverse(s->reversedTaps.begin(), s->reversedTaps.end());
    s->buffer.assign(static_cast<std::size_t>(tapsLen - 1 + chunkLength), 0.0f);
    // The delay line holds the most recent input last, like the history kept between calls.
    if (delayLine != nullptr)
        std::copy(delayLine, delayLine + tapsLen - 1, s->buffer.begin());
    *state = s;
    return ippStsNoErr;
}

IppStatus ippsFIR_32f(const Ipp32f* src, Ipp32f* dst, int n, IppsFIRState_32f* state)
{
    const int history = state->tapsLen - 1;
    float* buffer = state->buffer.data();
    const float* taps = state->reversedTaps.data();
    for (int done = 0; done < n;)
    {
        const int count = std::min(chunkLength, n - done);
        std::memcpy(buffer + history, src + done, static_cast<std::size_t>(count) * sizeof(float));
        // dst may alias src: every read of this chunk's input comes from the buffer.
        if (hasAvx2)
            firChunkAvx2(buffer, taps, state->tapsLen, dst + done, count);
        else
            firChunkBaseline(buffer, taps, state->tapsLen, dst + done, count);
        std::memmove(buffer, buffer + count, static_cast<std::size_t>(history) * sizeof(float));
        done += count;
    }
    return ippStsNoErr;
}

IppStatus ippsFIRFree_32f(IppsFIRState_32f* state)
{
    velmar::audio::PoolDeleter()(state);
    return ippStsNoErr;
}
