// Single-rate FIR filter. Input is processed in chunks through a buffer that holds the last
// tapsLen - 1 samples of history ahead of the chunk; the taps are stored reversed, so that output
// t of a chunk is a dot product with buffer[t .. t + tapsLen - 1]. A block of neighbouring outputs
// is summed side by side in registers, tap after tap: the compiler vectorises across the outputs,
// and every output still adds its products in tap order.

#include "toolkit/Ipp.h"

#include "toolkit/MemoryPool.h"

#include <algorithm>
#include <cstring>
#include <immintrin.h>
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

// Short filters with AVX2, tiled: taps fall into eight classes by their index mod 8, and a class's
// taps j = c + 8s meet the inputs buffer[t0 + c + 8(s + q)] for output vector q, which depend on
// s + q only. So a block of Q output vectors loads S + Q - 1 input vectors per class for S * Q
// products, where one load per product (the plain kernel) leaves the loads setting the pace. Every
// output adds its products class by class, each class in rising s, also in the scalar tail: an
// output's bits do not depend on where a chunk or a call happened to start.
constexpr int tiledOutputVectors = 8;
constexpr int tiledMaxPerClass = 4; // up to 32 taps

template <int S>
__attribute__((target("avx2"))) inline void tiledClass(__m256* acc, const float* in, const float* taps)
{
    constexpr int Q = tiledOutputVectors;
    __m256 tap[S];
    for (int s = 0; s < S; ++s)
        tap[s] = _mm256_set1_ps(taps[8 * s]);
#pragma GCC unroll 16
    for (int u = 0; u < S + Q - 1; ++u)
    {
        const __m256 x = _mm256_loadu_ps(in + 8 * u);
#pragma GCC unroll 8
        for (int q = 0; q < Q; ++q)
        {
            const int s = u - q;
            if (s >= 0 && s < S)
                acc[q] = _mm256_add_ps(acc[q], _mm256_mul_ps(tap[s], x));
        }
    }
}

__attribute__((target("avx2"))) void firChunkTiled(const float* buffer, const float* taps, int tapCount,
                                                   float* out, int count)
{
    constexpr int Q = tiledOutputVectors;
    int t0 = 0;
    for (; t0 + 8 * Q <= count; t0 += 8 * Q)
    {
        __m256 acc[Q];
        for (int q = 0; q < Q; ++q)
            acc[q] = _mm256_setzero_ps();
        for (int c = 0; c < 8 && c < tapCount; ++c)
        {
            const float* in = buffer + t0 + c;
            switch ((tapCount - c + 7) / 8)
            {
            case 1:
                tiledClass<1>(acc, in, taps + c);
                break;
            case 2:
                tiledClass<2>(acc, in, taps + c);
                break;
            case 3:
                tiledClass<3>(acc, in, taps + c);
                break;
            default:
                tiledClass<4>(acc, in, taps + c);
                break;
            }
        }
        for (int q = 0; q < Q; ++q)
            _mm256_storeu_ps(out + t0 + 8 * q, acc[q]);
    }
    for (; t0 < count; ++t0)
    {
        float acc = 0.0f;
        for (int c = 0; c < 8; ++c)
            for (int j = c; j < tapCount; j += 8)
                acc += taps[j] * buffer[t0 + j];
        out[t0] = acc;
    }
}

// Longer filters: the block size was measured per instruction set, eight vector registers of
// outputs with AVX2, four with SSE2.
__attribute__((target("avx2"))) void firChunkAvx2(const float* buffer, const float* taps, int tapCount,
                                                  float* out, int count)
{
    if (tapCount <= 8 * tiledMaxPerClass)
        firChunkTiled(buffer, taps, tapCount, out, count);
    else
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
