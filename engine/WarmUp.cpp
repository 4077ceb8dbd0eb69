#include "engine/Tindler.h"

#include <algorithm>

namespace velmar::audio
{

namespace
{
/** A small seeded generator: the warm-up audio is the same on every run. */
struct Noise
{
    std::uint32_t state = 12345u;
    float next()
    {
        state = state * 1664525u + 1013904223u;
        return static_cast<float>(static_cast<std::int32_t>(state >> 8) - (1 << 23)) /
               static_cast<float>(1 << 23);
    }
};
} // namespace

void Tindler::warmUp(std::int32_t maxBlockSize)
{
    maxBlockSize = std::max(1, maxBlockSize);
    // The queues hold a frame and its overlap on top of the largest block.
    inputQueue.reserve(numChannels, static_cast<std::int64_t>(frameLength) + overlap + maxBlockSize);
    outputQueue.reserve(numChannels, static_cast<std::int64_t>(frameLength) + maxBlockSize);

    const std::int32_t savedClicks = clickCount.load(std::memory_order_relaxed);
    const std::int32_t savedCrackles = crackleCount.load(std::memory_order_relaxed);
    const std::int32_t savedSamples = countedSamples.load(std::memory_order_relaxed);

    float lowest = 0.0f;
    float longest = 0.0f;
    parameterRange(ClickLength, lowest, longest);
    // Everything on and at its most sensitive, the longest clicks, once with the residual and the
    // drop-out envelope and once without: every working block of every stage is made.
    const FrameSettings passes[] = {
        {true, 100.0f, longest, true, true, 100.0f, 30.0f, true},
        {true, 100.0f, longest, false, true, 100.0f, 30.0f, false},
    };
    const auto longestClick = std::max<std::int32_t>(
        1, static_cast<std::int32_t>(static_cast<double>(longest) * sampleRate / 1000.0));
    Noise noise;
    std::int64_t position = 0;
    for (const FrameSettings& settings : passes)
    {
        forcedSettings = &settings;
        // Blocks of every power of two up to the largest, then the largest until three frames ran.
        std::int32_t size = 1;
        std::int32_t framesRun = 0;
        while (size <= maxBlockSize || framesRun < 3)
        {
            const std::int32_t n = std::min(size, maxBlockSize);
            Signal32 block(numChannels, n);
            for (std::int32_t i = 0; i < n; ++i, ++position)
            {
                // Quiet noise with a burst as long as the longest click every half hop, and single
                // ticks between: clicks and crackle both.
                const std::int64_t phase = position % std::max<std::int64_t>(1, getHop() / 2);
                const float burst = phase < longestClick ? 0.8f : (phase == longestClick + 7 ? 0.5f : 0.0f);
                for (std::int32_t c = 0; c < numChannels; ++c)
                    block.channel(c)[i] = 0.01f * noise.next() + burst * noise.next();
            }
            framesRun += process(block).length() / std::max(1, getHop());
            size = size <= maxBlockSize ? size * 2 : size;
        }
    }
    forcedSettings = nullptr;

    reset();
    clickCount.store(savedClicks, std::memory_order_relaxed);
    crackleCount.store(savedCrackles, std::memory_order_relaxed);
    countedSamples.store(savedSamples, std::memory_order_relaxed);
}

} // namespace velmar::audio
