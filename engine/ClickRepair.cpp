#include "engine/Tindler.h"

#include "engine/DotProduct.h"

#include <cmath>
#include <vector>

namespace velmar::audio
{

Signal32 Tindler::repairClicks(const Signal32& frame, const Signal32& coefficients, const ClickList& clicks)
{
    Signal32 result = frame.clone();
    // History comes from the unrepaired frame, so a region close behind another predicts from its
    // raw neighbour; where two overlap, the later one wins.
    for (const ClickRegion& region : clicks)
        repairRegion(frame, result, coefficients, region.channel, region.start, region.end, 0.0f);
    return result;
}

void Tindler::keepLagsOfUntouchedChannels(KeptLags& kept, const ClickList& clicks)
{
    for (std::int32_t c = 0; c < kept.channelCount(); ++c)
        kept.setReusable(c, true);
    for (const ClickRegion& region : clicks)
        kept.setReusable(region.channel, false);
}

void Tindler::repairRegion(const Signal32& source, const Signal32& target, const Signal32& coefficients,
                           std::int32_t channel, std::int32_t start, std::int32_t end, float baselineFactor)
{
    const float* x = source.channel(channel);
    float* y = target.channel(channel);
    const float* a = coefficients.channel(channel);
    const std::int32_t m = coefficients.length();
    const std::int32_t gap = end - start;
    // One line of history and predictions: the predictor reads the m - 1 samples on one side of
    // the sample it predicts, and each prediction joins the history of the next. Every region lies
    // at least one predictor length inside the frame, so the history exists on both sides.
    PoolVector<double> line(static_cast<std::size_t>(gap + m - 1), 0.0);
    // The predictor in double, once per region, in the order each pass meets its history:
    // newestLast[j] = a[m - 1 - j] for the forward pass (history before the sample, oldest first),
    // oldestLast[j] = a[j + 1] for the backward pass (history after it, nearest first). Both
    // passes are then plain dot products over contiguous arrays.
    const std::int32_t taps = m - 1;
    PoolVector<double> newestLast(static_cast<std::size_t>(taps));
    PoolVector<double> oldestLast(static_cast<std::size_t>(taps));
    for (std::int32_t j = 0; j < taps; ++j)
    {
        newestLast[static_cast<std::size_t>(j)] = static_cast<double>(a[m - 1 - j]);
        oldestLast[static_cast<std::size_t>(j)] = static_cast<double>(a[j + 1]);
    }
    const Kernel kernel = bestKernel();

    // Forward: the predictor continues the signal into the gap from the left, on its own output.
    const double leftBaseline = static_cast<double>(baselineFactor) * static_cast<double>(x[start]);
    double* forward = line.data() + (m - 1); // forward[i] stands for position start + i
    for (std::int32_t i = -(m - 1); i < 0; ++i)
        forward[i] = static_cast<double>(x[start + i]) - leftBaseline;
    for (std::int32_t i = 0; i < gap; ++i)
    {
        // -(sum over k from 1 to m - 1 of a[k] forward[i - k])
        const double acc = -dotProduct(newestLast.data(), forward + i - taps, taps, kernel);
        forward[i] = acc;
        y[start + i] = static_cast<float>(acc + leftBaseline);
    }

    // Backward: the same predictor runs backward in time from the right, the autocorrelation
    // being symmetric, and a raised cosine fades from the forward to the backward prediction.
    const double rightBaseline = static_cast<double>(baselineFactor) * static_cast<double>(x[end - 1]);
    double* backward = line.data(); // backward[i] stands for position start + i
    for (std::int32_t i = gap; i < gap + m - 1; ++i)
        backward[i] = static_cast<double>(x[start + i]) - rightBaseline;
    const float step = 3.1415927f / static_cast<float>(gap);
    for (std::int32_t i = gap - 1; i >= 0; --i)
    {
        const float w = 0.5f - 0.5f * std::cos(static_cast<float>(i) * step);
        // -(sum over k from 1 to m - 1 of a[k] backward[i + k])
        const double acc = -dotProduct(oldestLast.data(), backward + i + 1, taps, kernel);
        backward[i] = acc;
        y[start + i] =
            static_cast<float>(static_cast<double>(w) * (acc + rightBaseline)) + (1.0f - w) * y[start + i];
    }
}

} // namespace velmar::audio
