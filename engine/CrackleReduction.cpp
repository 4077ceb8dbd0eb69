#include "engine/Tindler.h"

#include "toolkit/ScalarHelpers.h"

#include <algorithm>
#include <cmath>

namespace velmar::audio
{

Signal32 Tindler::reduceCrackle(const Signal32& frame, const CrackleList& crackles,
                                const ChannelLevels& channelLevels)
{
    const std::int32_t n = frameLength;
    const std::int32_t bins = n / 2 + 1;
    const float reduction = frameSettings().crackleReduction;
    // The floor keeps the quotient below away from zero.
    const float floor = decibelsToGain(-192.0f);
    const float scale = 1.0f / static_cast<float>(n);

    // The notch stamped around every point: an odd-length raised cosine turned upside down.
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

    // Everywhere but in the notches the result is the frame itself: mask x frame + (1 - mask) x
    // denoised with a mask of 1 there. So the frame is copied, and only notched samples are mixed.
    Signal32 result = frame.clone();
    ComplexSignal32 spectrum(1, bins);
    Signal32 denoised(1, n);
    Signal32 mask(1, n);
    for (std::int32_t c = 0; c < numChannels; ++c)
    {
        // A channel without crackle keeps its frame, and needs no transforms at all.
        bool marked = false;
        for (const CracklePoint& point : crackles)
            marked = marked || point.channel == c;
        if (!marked)
            continue;

        // The denoised frame: a flat amount, from the detector's level, taken off every bin's
        // magnitude with the phase kept. The rectangular frame is transformed as it stands.
        complex32* x = spectrum.channel(0);
        fft.forward(frame.channel(c), x, n);
        const float subtraction = reduction * channelLevels[static_cast<std::size_t>(c)];
        for (std::int32_t k = 0; k < bins; ++k)
        {
            const float magnitude = std::max(std::sqrt(x[k].re * x[k].re + x[k].im * x[k].im), floor);
            // A real gain from 0 to 1: at or below the subtraction, the bin is silenced. A NaN
            // (an unclamped reduction of NaN, or infinity times a silent level) leaves the bin
            // as it is, like no reduction at all.
            const float ratio = (magnitude - subtraction) / magnitude;
            const float gain = ratio > 0.0f ? std::min(ratio, 1.0f) : (ratio <= 0.0f ? 0.0f : 1.0f);
            x[k] = {x[k].re * gain, x[k].im * gain};
        }
        fft.inverse(x, denoised.channel(0), n);

        // The stamps multiply, so that close points deepen and widen the gap. The detector scans
        // far enough from both ends of the frame that a stamp always fits.
        float* m = mask.channel(0);
        std::fill(m, m + n, 1.0f);
        for (const CracklePoint& point : crackles)
            if (point.channel == c)
                for (std::int32_t j = -half; j <= half; ++j)
                    m[point.position + j] *= pulse[j + half];

        const float* in = frame.channel(c);
        const float* d = denoised.channel(0);
        float* out = result.channel(c);
        for (const CracklePoint& point : crackles)
            if (point.channel == c)
                for (std::int32_t i = point.position - half; i <= point.position + half; ++i)
                {
                    const float kept = m[i] * in[i];
                    // The transforms are unscaled: their round trip multiplies by n.
                    const float replaced = (1.0f - m[i]) * (d[i] * scale);
                    out[i] = kept + replaced;
                }
    }
    return result;
}

} // namespace velmar::audio
