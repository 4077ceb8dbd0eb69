#include "engine/Tindler.h"

#include "toolkit/FftBlockFilter.h"
#include "toolkit/ScalarHelpers.h"
#include "toolkit/SignalMaths.h"

#include <algorithm>
#include <limits>

namespace velmar::audio
{

namespace
{
inline bool quietOctet(const float* envelope, const float* detector, float clickLimit, float crackleLimit)
{
    int loud = 0;
    for (int q = 0; q < 8; ++q)
        loud |= static_cast<int>(envelope[q] > clickLimit) | static_cast<int>(detector[q] > crackleLimit);
    return loud == 0;
}
} // namespace

void Tindler::detect(const Signal32& frame, const Signal32& coefficients, ClickList& clicks,
                     CrackleList& crackles, ChannelLevels& channelLevels, ChannelPositions& lastRepairEnd)
{
    const FrameSettings settings = frameSettings();
    const bool clicksOn = settings.enableTindle;
    const bool crackleOn = settings.enableDecrackle;

    // The prediction-error filter, run forward and then backward in time. The backward run starts
    // from the forward run's delay line, which disturbs only the frame's last, unscanned samples.
    FftBlockFilter predictionError(coefficients, -1);
    const Signal32 forwardMagnitude = abs(predictionError.process(frame));
    const Signal32 backwardError = flip(predictionError.process(flip(frame)));
    const Signal32 backwardMagnitude = abs(backwardError);
    // The geometric mean: a sample counts only where the predictor fails in both directions.
    const Signal32 detector = sqrt(forwardMagnitude * backwardMagnitude);

    lastRepairEnd.assign(static_cast<std::size_t>(numChannels), 0);
    const ChannelLevels levels = rms(detector);
    channelLevels.assign(levels.begin(), levels.end());
    if (!clicksOn && !crackleOn)
        return;

    FftBlockFilter smoother(smoothingKernel, -1);
    const Signal32 rawEnvelope = settings.detectDropouts ? forwardMagnitude + backwardMagnitude : detector;
    const Signal32 envelope = smoother.process(rawEnvelope);
    // The unsmoothed level against a half-gain envelope: the threshold is in effect about 6 dB
    // above its number, and that pairing is part of the detector's calibration.
    const ChannelLevels envelopeLevels = rms(rawEnvelope);
    const std::int32_t halfKernel = smoothingKernel.length() / 2; // the smoother's delay

    // ClickLength arrives unclamped (from automation or a saved state): a length beyond the range
    // is held to the longest the frame was sized for, and NaN, like anything below one sample,
    // counts as one sample. Converting first would overflow the integer.
    const double wantedSamples = static_cast<double>(settings.clickLength) * sampleRate / 1000.0;
    const std::int32_t clickSamples =
        wantedSamples >= static_cast<double>(maxClickSamples)
            ? maxClickSamples
            : (wantedSamples >= 1.0 ? static_cast<std::int32_t>(wantedSamples) : 1);
    const auto guard = static_cast<std::int32_t>(static_cast<float>(clickSamples) * guardFraction);
    const std::int32_t halfClick = clickSamples / 2;
    const std::int32_t holdOffSamples = 2 * guard;
    const float clickGain = decibelsToGain(settings.clickSensitivity * -0.2f + 8.0f);
    const float crackleThreshold = decibelsToGain(settings.crackleSensitivity * -0.4f - 18.0f);
    const std::int32_t outputEnd = frameLength - overlap;

    for (std::int32_t c = 0; c < numChannels; ++c)
    {
        const float clickThreshold = envelopeLevels[static_cast<std::size_t>(c)] * clickGain;
        const float* env = envelope.channel(c) + halfKernel;
        const float* det = detector.channel(c);
        float peak = 0.0f;
        std::int32_t peakPosition = -1;
        std::int32_t aboveCount = 0;
        std::int32_t holdOff = 0;

        const std::int32_t scanEnd = frameLength - scanMargin;
        // With no click open and no hold-off, a sample does nothing unless it rises above the
        // peak, the click threshold or the crackle threshold; such quiet stretches, most of a
        // frame, are passed over eight samples at a time. The comparisons are those of the
        // branches below, so a NaN is quiet there as it is here.
        const float crackleLimit = crackleOn ? crackleThreshold : std::numeric_limits<float>::infinity();
        for (std::int32_t i = overlap; i < scanEnd; ++i)
        {
            if (aboveCount == 0 && holdOff == 0)
            {
                const float clickLimit = clicksOn ? std::min(peak, clickThreshold) : peak;
                while (i + 8 <= scanEnd && quietOctet(env + i, det + i, clickLimit, crackleLimit))
                    i += 8;
                if (i == scanEnd)
                    break;
            }
            const float v = env[i];
            // peak is reset only when a click is recorded, so it may date from before the onset.
            if (v > peak)
            {
                peakPosition = i;
                peak = v;
            }

            if (aboveCount != 0 && !(v < clickThreshold))
                ++aboveCount;
            else if (aboveCount != 0)
            {
                // The click ends at i, the first sample below the threshold, which lies in its
                // right guard.
                std::int32_t end = i + guard;
                std::int32_t start = i - guard - aboveCount;
                if (end - start > clickSamples)
                {
                    start = std::max(start, peakPosition - halfClick);
                    end = start + clickSamples;
                    if (end >= outputEnd)
                    {
                        end = outputEnd - 1;
                        start = end - clickSamples;
                    }
                }
                clicks.push_back({peak, c, start, end});
                // A region that starts behind the output section is found again by the next frame.
                if (start < outputEnd)
                    lastRepairEnd[static_cast<std::size_t>(c)] = end;
                peak = 0.0f;
                aboveCount = 0;
                holdOff = holdOffSamples;
            }
            else if (holdOff > 0)
                --holdOff;
            else if (v > clickThreshold && clicksOn)
                aboveCount = 1;
            else if (det[i] > crackleThreshold && crackleOn)
                crackles.push_back({c, i});
        }
    }
}

} // namespace velmar::audio
