// Single-rate FIR filter. Input is processed in chunks through a buffer that holds the last
// tapsLen - 1 samples of history ahead of the chunk; the taps are stored reversed, so that output
// t of a chunk is a dot product with buffer[t .. t + tapsLen - 1]. The loops run over t innermost,
// which the compiler vectorises without reordering any sum.

#include "toolkit/Ipp.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <vector>

namespace
{
constexpr int chunkLength = 1024;
}

struct IppsFIRState_32f
{
    int tapsLen = 0;
    std::vector<float> reversedTaps;
    std::vector<float> buffer; // tapsLen - 1 samples of history, then up to one chunk of input
};

IppStatus ippsFIRInitAlloc_32f(IppsFIRState_32f** state, const Ipp32f* taps, int tapsLen,
                               const Ipp32f* delayLine)
{
    if (state == nullptr || taps == nullptr)
        return ippStsNullPtrErr;
    if (tapsLen < 1)
        return ippStsSizeErr;
    auto* s = new IppsFIRState_32f;
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
        float* __restrict out = dst + done;
        // dst may alias src: every read of this chunk's input comes from the buffer.
        std::fill(out, out + count, 0.0f);
        for (int j = 0; j <= history; ++j)
        {
            const float tap = taps[j];
            const float* __restrict x = buffer + j;
            for (int t = 0; t < count; ++t)
                out[t] += tap * x[t];
        }
        std::memmove(buffer, buffer + count, static_cast<std::size_t>(history) * sizeof(float));
        done += count;
    }
    return ippStsNoErr;
}

IppStatus ippsFIRFree_32f(IppsFIRState_32f* state)
{
    delete state;
    return ippStsNoErr;
}
