#include "engine/Tindler.h"

#include "toolkit/ScalarHelpers.h"
#include "toolkit/SignalMaths.h"

#include <cmath>

namespace velmar::audio
{

Signal32 Tindler::reduceCrackle(const Signal32& frame, const CrackleList& crackles,
                                const ChannelLevels& channelLevels)
{
    const std::int32_t n = frameLength;
    const std::int32_t bins = n / 2 + 1;

    // The denoised frame: a flat amount, from the detector's level, taken off every bin's
    // magnitude with the phases kept. The rectangular frame is transformed as it stands.
    const ComplexSignal32 spectrum = fft.forward(frame);
    // The floor keeps the quotient below away from zero.
    const Signal32 magnitudes = lowerBound(magnitude(spectrum), decibelsToGain(-192.0f));
    Signal32 subtraction(numChannels, bins);
    const float reduction = frameSettings().crackleReduction;
    for (std::int32_t c = 0; c < numChannels; ++c)
        ippsSet_32f(reduction * channelLevels[static_cast<std::size_t>(c)], subtraction.channel(c), bins);
    const Signal32 difference = magnitudes - subtraction;
    const Signal32 gains = clip(difference / magnitudes, 0.0f, 1.0f);
    const ComplexSignal32 filtered = spectrum * toComplex(gains);
    const float scale = 1.0f / static_cast<float>(n);
    const Signal32 denoised = fft.inverse(filtered) * scale;

    // The mask: an odd-length notch stamped multiplicatively around every point, so that close
    // points deepen and widen the gap.
    Signal32 mask(numChannels, n);
    mask.fill(1.0f);
    auto pulseLength =
        static_cast<std::int32_t>(static_cast<double>(cracklePulseMs) * sampleRate / 1000.0 + 0.5);
    if (pulseLength < 1)
        pulseLength = 1;
    if (pulseLength % 2 == 0)
        ++pulseLength;
    if (cracklePulse.isEmpty() || cracklePulse.length() != pulseLength)
    {
        cracklePulse = Signal32(1, pulseLength);
        for (std::int32_t i = 0; i < pulseLength; ++i)
            cracklePulse.channel(0)[i] = 0.5f * std::cos(static_cast<float>(i + 1) * 6.2831855f /
                                                         static_cast<float>(pulseLength + 1)) +
                                         0.5f;
    }
    const std::int32_t half = pulseLength / 2;
    const float* pulse = cracklePulse.channel(0);
    // The detector scans far enough from both ends of the frame that a stamp always fits.
    for (const CracklePoint& point : crackles)
    {
        float* m = mask.channel(point.channel) + point.position;
        for (std::int32_t j = -half; j <= half; ++j)
            m[j] *= pulse[j + half];
    }

    // The splice: mask x frame + (1 - mask) x denoised.
    Signal32 ones(numChannels, n);
    ones.fill(1.0f);
    const Signal32 kept = mask * frame;
    const Signal32 inverted = ones - mask;
    const Signal32 replaced = inverted * denoised;
    return kept + replaced;
}

} // namespace velmar::audio
