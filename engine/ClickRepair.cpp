#include "engine/Tindler.h"

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

namespace
{
// -(sum over k from 1 to count - 1 of a[k] h[-k]): the prediction from the samples just before h.
// Four interleaved partial sums keep the adds from waiting on each other; the order differs from
// one running sum only in rounding far below a float sample's precision.
double predictBackwards(const float* a, const double* h, std::int32_t count)
{
    double s[4] = {};
    std::int32_t k = 1;
    for (; k + 4 <= count; k += 4)
        for (std::int32_t q = 0; q < 4; ++q)
            s[q] -= static_cast<double>(a[k + q]) * h[-(k + q)];
    for (; k < count; ++k)
        s[0] -= static_cast<double>(a[k]) * h[-k];
    return (s[0] + s[1]) + (s[2] + s[3]);
}

// The same with the samples just after h.
double predictForwards(const float* a, const double* h, std::int32_t count)
{
    double s[4] = {};
    std::int32_t k = 1;
    for (; k + 4 <= count; k += 4)
        for (std::int32_t q = 0; q < 4; ++q)
            s[q] -= static_cast<double>(a[k + q]) * h[k + q];
    for (; k < count; ++k)
        s[0] -= static_cast<double>(a[k]) * h[k];
    return (s[0] + s[1]) + (s[2] + s[3]);
}
} // namespace

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

    // Forward: the predictor continues the signal into the gap from the left, on its own output.
    const double leftBaseline = static_cast<double>(baselineFactor) * static_cast<double>(x[start]);
    double* forward = line.data() + (m - 1); // forward[i] stands for position start + i
    for (std::int32_t i = -(m - 1); i < 0; ++i)
        forward[i] = static_cast<double>(x[start + i]) - leftBaseline;
    for (std::int32_t i = 0; i < gap; ++i)
    {
        const double acc = predictBackwards(a, forward + i, m);
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
        const double acc = predictForwards(a, backward + i, m);
        backward[i] = acc;
        y[start + i] =
            static_cast<float>(static_cast<double>(w) * (acc + rightBaseline)) + (1.0f - w) * y[start + i];
    }
}

} // namespace velmar::audio
