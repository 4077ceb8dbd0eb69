#pragma once

#include "engine/BaseAudioProcessor.h"
#include "engine/FrameEvents.h"
#include "engine/LinearPrediction.h"
#include "toolkit/RealFft.h"
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

    Allocates: setUp builds its kernel; every frame makes its working signals, event lists, filters
    and queue blocks. */
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

    /** Runs generated, damaged audio through the frame loop in blocks of every power of two up to
        maxBlockSize, with detection, repair, crackle and residual all exercised, and then resets:
        afterwards the memory pool holds every block that processing needs, so that the audio path
        takes nothing from the system. Settings and statistics are as they were. */
    void warmUp(std::int32_t maxBlockSize) override;

    bool setUp(std::int32_t channelCount, double rate) override;
    std::int32_t latency() const override { return frameLength + overlap; }
    void parameterRange(std::int32_t index, float& minimum, float& maximum) const override;
    float parameter(std::int32_t index) const override;
    void setParameter(std::int32_t index, float value) override;
    void reset() override;
    Signal32 process(const Signal32& input) override;

    /** The raw counts behind the rates. */
    struct StatisticsCounts
    {
        std::int32_t clicks = 0;
        std::int32_t crackles = 0;
        std::int32_t samples = 0;
    };

    /** Clicks and crackle points per second and channel since the last read, which clears them;
        counts, when given, receives what the rates were formed from. False, with zeros, when no
        frame has been counted since. */
    bool readStatistics(float& clicksPerSecond, float& cracklesPerSecond, StatisticsCounts* counts = nullptr);

    /** Restores one raw frame of frameLength samples, or gives what was removed from it in
        residual mode; fills lastRepairEnd per channel with how far the frame's last carried click
        repair reached (0 for none), and adds the frame's counts to the statistics. */
    Signal32 restoreFrame(const Signal32& frame, ChannelPositions& lastRepairEnd);

    /** Finds the frame's clicks and crackle points from its forward and backward prediction
        errors under the given predictor, and the level of its detection signal per channel. */
    void detect(const Signal32& frame, const Signal32& coefficients, ClickList& clicks, CrackleList& crackles,
                ChannelLevels& channelLevels, ChannelPositions& lastRepairEnd);

    /** A copy of frame with every click region filled in by prediction from both sides; history is
        always read from frame itself. */
    static Signal32 repairClicks(const Signal32& frame, const Signal32& coefficients,
                                 const ClickList& clicks);

    /** Marks in kept the channels that repairClicks leaves as they were, those without a click:
        their windowed signal is the one the kept lags came from. */
    static void keepLagsOfUntouchedChannels(KeptLags& kept, const ClickList& clicks);

    /** Fills start .. end - 1 of one channel of target by two-sided extrapolation from source. */
    static void repairRegion(const Signal32& source, const Signal32& target, const Signal32& coefficients,
                             std::int32_t channel, std::int32_t start, std::int32_t end,
                             float baselineFactor);

    /** frame with a spectrally denoised copy of itself spliced in around each crackle point. */
    Signal32 reduceCrackle(const Signal32& frame, const CrackleList& crackles,
                           const ChannelLevels& channelLevels);

    std::int32_t getFrameLength() const noexcept { return frameLength; }
    std::int32_t getOverlap() const noexcept { return overlap; }
    std::int32_t getScanMargin() const noexcept { return scanMargin; }
    std::int32_t getHop() const noexcept { return frameLength - 2 * overlap; }
    const Signal32& getSmoothingKernel() const noexcept { return smoothingKernel; }

private:
    /** The settings as one frame sees them. */
    struct FrameSettings
    {
        bool enableTindle;
        float clickSensitivity;
        float clickLength;
        bool detectDropouts;
        bool enableDecrackle;
        float crackleSensitivity;
        float crackleReduction;
        bool residualMode;
    };

    /** The settings now, or those that a warm-up forces. */
    FrameSettings frameSettings() const;
    void runFrame();

    RealFft fft;
    SignalQueue<Signal32> inputQueue;
    SignalQueue<Signal32> outputQueue;
    Signal32 analysisWindow;
    Signal32 cracklePulse;
    Signal32 smoothingKernel;
    Signal32 frameTail;
    std::int32_t frameLength = 0;
    std::int32_t overlap = 0;
    std::int32_t scanMargin = 0;
    std::int32_t maxClickSamples = 1; // the longest click the frame is sized for
    const std::int32_t detectionOrder = 24;
    const std::int32_t repairOrder = 240;
    const float kernelLengthMs = 0.5f;
    const float guardFraction = 0.05f;
    std::atomic<std::int32_t> crackleCount{0};
    std::atomic<std::int32_t> clickCount{0};
    std::atomic<std::int32_t> countedSamples{0};
    PoolVector<std::int32_t> carryEnd;

    // Per-frame working lists, sized at set-up so that a frame allocates none.
    ClickList frameClicks;
    CrackleList frameCrackles;
    ChannelLevels frameLevels;
    ChannelPositions frameRepairEnd;
    KeptLags frameLags;
    const FrameSettings* forcedSettings = nullptr;

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
