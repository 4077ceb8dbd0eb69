#include "engine/Tindler.h"

#include "toolkit/ScalarHelpers.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace velmar::audio
{

namespace
{
constexpr auto relaxed = std::memory_order_relaxed;

struct ParameterRange
{
    float minimum;
    float maximum;
};

constexpr ParameterRange parameterRanges[Tindler::parameterCount] = {
    {0.0f, 1.0f}, {0.0f, 100.0f}, {0.1f, 10.0f},  {0.0f, 1.0f},
    {0.0f, 1.0f}, {0.0f, 100.0f}, {0.0f, 100.0f}, {0.0f, 1.0f},
};

void checkIndex(std::int32_t index)
{
    // Compared unsigned, so a negative index is out of range as well.
    if (static_cast<std::uint32_t>(index) >= static_cast<std::uint32_t>(Tindler::parameterCount))
        throw std::out_of_range("Parameter index");
}

float fromBool(const std::atomic<bool>& b)
{
    return b.load(relaxed) ? 1.0f : 0.0f;
}
} // namespace

bool Tindler::setUp(std::int32_t channelCount, double rate)
{
    numChannels = channelCount;
    sampleRate = rate;

    const auto kernelSamples = std::max<std::int32_t>(
        1, static_cast<std::int32_t>(static_cast<double>(kernelLengthMs) * sampleRate / 1000.0));

    // A Hann window without its zero end points, divided by its length: the taps sum to about 1/2.
    smoothingKernel = Signal32(numChannels, kernelSamples);
    for (std::int32_t c = 0; c < numChannels; ++c)
    {
        float* taps = smoothingKernel.channel(c);
        for (std::int32_t i = 0; i < kernelSamples; ++i)
        {
            const float angle =
                6.2831855f * static_cast<float>(i + 1) / static_cast<float>(kernelSamples + 1);
            taps[i] = (0.5f - 0.5f * std::cos(angle)) / static_cast<float>(kernelSamples);
        }
    }

    // Below 38 Hz the nearest power of two is 0, which the doubling below would never grow.
    frameLength = std::max<std::int32_t>(1, nearestPowerOfTwo(static_cast<std::int32_t>(sampleRate / 25.0)));

    // Sized for the longest click the user can set, so that ClickLength never needs a new setUp.
    float minimumLength = 0.0f;
    float maximumLength = 0.0f;
    parameterRange(ClickLength, minimumLength, maximumLength);
    maxClickSamples = std::max<std::int32_t>(
        1, static_cast<std::int32_t>(static_cast<double>(maximumLength) * sampleRate / 1000.0));
    const auto guardSamples = static_cast<std::int32_t>(static_cast<float>(maxClickSamples) * guardFraction);
    const auto largestOrder = std::max(detectionOrder, repairOrder);

    scanMargin = std::max(kernelSamples, guardSamples + largestOrder);
    overlap = std::max(kernelSamples, maxClickSamples + guardSamples + largestOrder);
    while (frameLength <= 2 * overlap)
        frameLength *= 2;

    carryEnd.assign(static_cast<std::size_t>(numChannels), 0);
    frameRepairEnd.assign(static_cast<std::size_t>(numChannels), 0);
    frameLevels.assign(static_cast<std::size_t>(numChannels), 0.0f);
    // The short predictor's lags: lags 0 to order + 1 of a fit of detectionOrder coefficients.
    frameLags.prepare(numChannels, detectionOrder + 1);
    // A frame finds at most one event per scanned sample and channel.
    const auto scanned = static_cast<std::size_t>(std::max(0, frameLength - scanMargin - overlap));
    frameClicks.reserve(scanned * static_cast<std::size_t>(numChannels));
    frameCrackles.reserve(scanned * static_cast<std::size_t>(numChannels));
    return true;
}

Tindler::FrameSettings Tindler::frameSettings() const
{
    if (forcedSettings != nullptr)
        return *forcedSettings;
    return {enableTindle.load(relaxed),     clickSensitivity.load(relaxed), clickLength.load(relaxed),
            detectDropouts.load(relaxed),   enableDecrackle.load(relaxed),  crackleSensitivity.load(relaxed),
            crackleReduction.load(relaxed), residualMode.load(relaxed)};
}

void Tindler::parameterRange(std::int32_t index, float& minimum, float& maximum) const
{
    checkIndex(index);
    minimum = parameterRanges[index].minimum;
    maximum = parameterRanges[index].maximum;
}

float Tindler::parameter(std::int32_t index) const
{
    checkIndex(index);
    switch (index)
    {
    case EnableTindle:
        return fromBool(enableTindle);
    case ClickSensitivity:
        return clickSensitivity.load(relaxed);
    case ClickLength:
        return clickLength.load(relaxed);
    case DetectDropouts:
        return fromBool(detectDropouts);
    case EnableDecrackle:
        return fromBool(enableDecrackle);
    case CrackleSensitivity:
        return crackleSensitivity.load(relaxed);
    case CrackleReduction:
        return crackleReduction.load(relaxed);
    default:
        return fromBool(residualMode);
    }
}

void Tindler::setParameter(std::int32_t index, float value)
{
    checkIndex(index);
    // Stored as given, with no clamping; a switch is on above one half.
    const bool on = value > 0.5f;
    switch (index)
    {
    case EnableTindle:
        enableTindle.store(on, relaxed);
        break;
    case ClickSensitivity:
        clickSensitivity.store(value, relaxed);
        break;
    case ClickLength:
        clickLength.store(value, relaxed);
        break;
    case DetectDropouts:
        detectDropouts.store(on, relaxed);
        break;
    case EnableDecrackle:
        enableDecrackle.store(on, relaxed);
        break;
    case CrackleSensitivity:
        crackleSensitivity.store(value, relaxed);
        break;
    case CrackleReduction:
        crackleReduction.store(value, relaxed);
        break;
    default:
        residualMode.store(on, relaxed);
        break;
    }
}

void Tindler::reset()
{
    inputQueue.clear();
    outputQueue.clear();
    // Zeros where a previous frame's tail would stand: the first frame's output section then
    // begins exactly with the first input sample.
    Signal32 lead(numChannels, overlap);
    lead.fill(0.0f);
    inputQueue.push(lead);
    carryEnd.assign(static_cast<std::size_t>(numChannels), 0);
}

bool Tindler::readStatistics(float& clicksPerSecond, float& cracklesPerSecond, StatisticsCounts* counts)
{
    if (countedSamples.load(relaxed) < 1)
    {
        clicksPerSecond = 0.0f;
        cracklesPerSecond = 0.0f;
        if (counts != nullptr)
            *counts = {};
        return false;
    }
    const std::int32_t samples = countedSamples.exchange(0, relaxed);
    const std::int32_t clicks = clickCount.exchange(0, relaxed);
    const std::int32_t crackles = crackleCount.exchange(0, relaxed);
    if (counts != nullptr)
        *counts = {clicks, crackles, samples};
    const auto denominator = static_cast<double>(samples * numChannels);
    clicksPerSecond = static_cast<float>(static_cast<double>(clicks) * sampleRate / denominator);
    cracklesPerSecond = static_cast<float>(static_cast<double>(crackles) * sampleRate / denominator);
    return true;
}

} // namespace velmar::audio
