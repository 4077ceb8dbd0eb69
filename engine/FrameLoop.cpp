#include "engine/Tindler.h"

#include "toolkit/Ipp.h"

namespace velmar::audio
{

Signal32 Tindler::process(const Signal32& input)
{
    inputQueue.push(input);
    // Strict: the queue starts with overlap zeros, so the first frame runs once more than
    // frameLength real samples have arrived.
    while (inputQueue.sampleCount() > static_cast<std::int64_t>(frameLength) + overlap)
        runFrame();
    return outputQueue.pop(static_cast<std::int32_t>(outputQueue.sampleCount()));
}

void Tindler::runFrame()
{
    const std::int32_t hop = getHop();
    const Signal32 frame = inputQueue.peek(frameLength);
    ChannelPositions& lastRepairEnd = frameRepairEnd;
    const Signal32 result = restoreFrame(frame, lastRepairEnd);

    // A repair that the previous frame ran past the seam is kept: this frame's detector starts at
    // the seam and cannot see that click's beginning.
    if (!frameTail.isEmpty() && frameTail.length() >= 1 && numChannels >= 1)
    {
        for (std::int32_t c = 0; c < numChannels; ++c)
        {
            const auto ch = static_cast<std::size_t>(c);
            const std::int32_t n = std::min(carryEnd[ch] - overlap, frameTail.length());
            if (n > 0)
                ippsCopy_32f(frameTail.channel(c), result.channel(c) + overlap, n);
            carryEnd[ch] = lastRepairEnd[ch] - frameLength + 2 * overlap;
        }
    }

    frameTail = result.slice(frameLength - overlap, overlap);
    outputQueue.push(result.slice(overlap, hop));
    inputQueue.discard(hop);
}

} // namespace velmar::audio
