#include "engine/Tindler.h"

namespace velmar::audio
{

Signal32 Tindler::restoreFrame(const Signal32& frame, std::vector<std::int32_t>& lastRepairEnd)
{
    lastRepairEnd.assign(static_cast<std::size_t>(numChannels), 0);
    countedSamples.fetch_add(frameLength - 2 * scanMargin, std::memory_order_relaxed);
    return frame.clone();
}

} // namespace velmar::audio
