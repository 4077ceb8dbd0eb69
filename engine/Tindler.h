#pragma once

#include "engine/BaseAudioProcessor.h"
#include "toolkit/SignalQueue.h"

#include <atomic>
#include <cstdint>
#include <vector>

namespace velmar::audio
{

/** The restoration engine. It queues the host's blocks, cuts the stream into overlapping frames of
    about 40 ms, restores each frame and queues the finished middle of it for output, so that its
    output is its input, restored, returned late and in bursts of one hop.

    Settings and statistics are atomics with relaxed order: the editor writes toggles and reads and
    clears the counters from its own thread without a lock, and each is one word.

    Allocates: setUp builds its kernel; every frame makes its working signals and queue blocks. */
class Tindler : public BaseAudioProcessor
{
public:
    enum ParameterId : std::int32_t
    {
        EnableTindle = 0,
        ClickSensitivity = 1,
        ClickLength = 2,
        DetectDropouts = 3,
        EnableDecrackle = 4,
        CrackleSensitivity = 5,
        CrackleReduction = 6,
        ResidualMode = 7,
        parameterCount = 8
    };

    Tindler() = default;

    bool setUp(std::int32_t channelCount, double rate) override;
    std::int32_t latency() const override { return frameLength + overlap; }
    void parameterRange(std::int32_t index, float& minimum, float& maximum) const override;
    float parameter(std::int32_t index) const override;
    void setParameter(std::int32_t index, float value) override;
    void reset() override;
    Signal32 process(const Signal32& input) override;

    /** Clicks and crackle points per second and channel since the last read, which clears them.
        False, with zeros, when no frame has been counted since. */
    bool readStatistics(float& clicksPerSecond, float& cracklesPerSecond);

    /** Restores one raw frame of frameLength samples; fills lastRepairEnd per channel with how far
        the frame's last click repair reached (0 for none). */
    Signal32 restoreFrame(const Signal32& frame, std::vector<std::int32_t>& lastRepairEnd);

    std::int32_t getFrameLength() const noexcept { return frameLength; }
    std::int32_t getOverlap() const noexcept { return overlap; }
    std::int32_t getScanMargin() const noexcept { return scanMargin; }
    std::int32_t getHop() const noexcept { return frameLength - 2 * overlap; }
    const Signal32& getSmoothingKernel() const noexcept { return smoothingKernel; }

private:
    void runFrame();

    SignalQueue<Signal32> inputQueue;
    SignalQueue<Signal32> outputQueue;
    Signal32 analysisWindow;
    Signal32 cracklePulse;
    Signal32 smoothingKernel;
    Signal32 frameTail;
    std::int32_t frameLength = 0;
    std::int32_t overlap = 0;
    std::int32_t scanMargin = 0;
    const std::int32_t detectionOrder = 24;
    const std::int32_t repairOrder = 240;
    const float kernelLengthMs = 0.5f;
    const float guardFraction = 0.05f;
    std::atomic<std::int32_t> crackleCount{0};
    std::atomic<std::int32_t> clickCount{0};
    std::atomic<std::int32_t> countedSamples{0};
    std::vector<std::int32_t> carryEnd;

    std::atomic<bool> enableTindle{true};
    std::atomic<float> clickSensitivity{30.0f};
    std::atomic<float> clickLength{2.0f};
    std::atomic<bool> detectDropouts{false};
    std::atomic<bool> enableDecrackle{true};
    std::atomic<float> crackleSensitivity{30.0f};
    std::atomic<float> crackleReduction{30.0f};
    const float cracklePulseMs = 0.2f;
    std::atomic<bool> residualMode{false};
};

} // namespace velmar::audio
