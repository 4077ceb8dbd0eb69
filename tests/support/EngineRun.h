#pragma once

#include "engine/Tindler.h"

#include <algorithm>
#include <cstdint>

namespace tindle::test
{

/** Runs the whole of input through a prepared engine in blocks of blockSize, flushes it with
    zeros, and returns the output aligned with the input (the engine's stream has no delay of its
    own, only lateness). framesRun receives the number of frames the input took. */
inline velmar::audio::Signal32 processWhole(velmar::audio::Tindler& engine,
                                            const velmar::audio::Signal32& input,
                                            std::int32_t blockSize = 512, std::int32_t* framesRun = nullptr)
{
    using velmar::audio::Signal32;
    const std::int32_t channels = input.channelCount();
    const std::int32_t length = input.length();
    Signal32 output(channels, length);
    std::int32_t written = 0;
    const auto take = [&](const Signal32& out)
    {
        const std::int32_t n = std::min(out.length(), length - written);
        for (std::int32_t c = 0; c < channels && n > 0; ++c)
            std::copy_n(out.channel(c), n, output.channel(c) + written);
        written += std::max<std::int32_t>(n, 0);
    };
    for (std::int32_t position = 0; position < length; position += blockSize)
        take(engine.process(input.slice(position, std::min(blockSize, length - position))));
    if (framesRun != nullptr)
        *framesRun = written / engine.getHop();
    Signal32 zeros(channels, engine.getFrameLength() + engine.getHop());
    zeros.fill(0.0f);
    while (written < length)
        take(engine.process(zeros));
    return output;
}

} // namespace tindle::test
