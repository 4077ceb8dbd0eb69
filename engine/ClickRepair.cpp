#include "engine/Tindler.h"

#include <cmath>
#include <vector>

namespace velmar::audio
{

Signal32 Tindler::repairClicks(const Signal32& frame, const Signal32& coefficients,
                               const std::vector<ClickRegion>& clicks)
{
    Signal32 result = frame.clone();
    // History comes from the unrepaired frame, so a region close behind another predicts from its
    // raw neighbour; where two overlap, the later one wins.
    for (const ClickRegion& region : clicks)
        repairRegion(frame, result, coefficients, region.channel, region.start, region.end, 0.0f);
    return result;
}

void Tindler::repairRegion(const Signal32& source, const Signal32& target, const Signal32& coefficients,
                           std::int32_t channel, std::int32_t start, std::int32_t end, float baselineFactor)
{
    const float* x = source.channel(channel);
    float* y = target.channel(channel);
    const float* a = coefficients.channel(channel);
    const std::int32_t m = coefficients.length();
    const auto ringSlot = [m](std::int32_t p) { return static_cast<std::size_t>(p % m); };
    // Position p lives in slot p mod M; positions are never negative here, since every region
    // lies at least one predictor length inside the frame.
    std::vector<double> ring(static_cast<std::size_t>(m), 0.0);

    // Forward: the predictor continues the signal into the gap from the left, on its own output.
    const double leftBaseline = static_cast<double>(baselineFactor) * static_cast<double>(x[start]);
    for (std::int32_t p = start - m; p < start; ++p)
        ring[ringSlot(p)] = static_cast<double>(x[p]) - leftBaseline;
    for (std::int32_t p = start; p < end; ++p)
    {
        double acc = 0.0;
        for (std::int32_t k = 1; k < m; ++k)
            acc -= static_cast<double>(a[k]) * ring[ringSlot(p - k)];
        ring[ringSlot(p)] = acc;
        y[p] = static_cast<float>(acc + leftBaseline);
    }

    // Backward: the same predictor runs backward in time from the right, the autocorrelation
    // being symmetric, and a raised cosine fades from the forward to the backward prediction.
    const double rightBaseline = static_cast<double>(baselineFactor) * static_cast<double>(x[end - 1]);
    for (std::int32_t p = end + m - 1; p >= end; --p)
        ring[ringSlot(p)] = static_cast<double>(x[p]) - rightBaseline;
    const float step = 3.1415927f / static_cast<float>(end - start);
    for (std::int32_t p = end - 1; p >= start; --p)
    {
        const float w = 0.5f - 0.5f * std::cos(static_cast<float>(p - start) * step);
        double acc = 0.0;
        for (std::int32_t k = 1; k < m; ++k)
            acc -= static_cast<double>(a[k]) * ring[ringSlot(p + k)];
        ring[ringSlot(p)] = acc;
        y[p] = static_cast<float>(static_cast<double>(w) * (acc + rightBaseline)) + (1.0f - w) * y[p];
    }
}

} // namespace velmar::audio
