#include "engine/Tindler.h"

#include "engine/LinearPrediction.h"
#include "toolkit/SignalMaths.h"

namespace velmar::audio
{

Signal32 Tindler::restoreFrame(const Signal32& frame, ChannelPositions& lastRepairEnd)
{
    if (analysisWindow.length() != frame.length())
    {
        const Signal32 window = hammingWindow(frame.length());
        analysisWindow = Signal32(numChannels, frame.length());
        for (std::int32_t c = 0; c < numChannels; ++c)
            ippsCopy_32f(window.channel(0), analysisWindow.channel(c), frame.length());
    }

    // The window serves the analysis only; the frame itself is repaired unwindowed.
    const Signal32 analysis = frame * analysisWindow;
    const Signal32 detectionCoefficients = linearPrediction(analysis, detectionOrder, frameLags);

    // The engine's own lists, emptied: their memory was reserved at set-up.
    ClickList& clicks = frameClicks;
    CrackleList& crackles = frameCrackles;
    ChannelLevels& channelLevels = frameLevels;
    clicks.clear();
    crackles.clear();
    detect(frame, detectionCoefficients, clicks, crackles, channelLevels, lastRepairEnd);

    // The long predictor is fitted to the frame with the clicks already patched by the short one,
    // so that it never learns the clicks themselves.
    Signal32 repairCoefficients = detectionCoefficients;
    if (detectionOrder != repairOrder)
    {
        const Signal32 firstPass = repairClicks(frame, detectionCoefficients, clicks);
        const Signal32 analysis2 = firstPass * analysisWindow;
        // A channel without clicks comes through the first pass as it was, so the lowest lags
        // kept from the short fit are its own.
        keepLagsOfUntouchedChannels(frameLags, clicks);
        repairCoefficients = linearPrediction(analysis2, repairOrder, frameLags);
    }
    const Signal32 repaired = repairClicks(frame, repairCoefficients, clicks);

    Signal32 result = reduceCrackle(repaired, crackles, channelLevels);
    // Input less restored, formed before the seams so that the residual's seams match.
    if (frameSettings().residualMode)
        result = frame - result;

    crackleCount.fetch_add(static_cast<std::int32_t>(crackles.size()), std::memory_order_relaxed);
    clickCount.fetch_add(static_cast<std::int32_t>(clicks.size()), std::memory_order_relaxed);
    // scanMargin, not overlap: the count is of the scanned stretch, which differs from the hop.
    countedSamples.fetch_add(frameLength - 2 * scanMargin, std::memory_order_relaxed);
    return result;
}

} // namespace velmar::audio
