#pragma once

#include "toolkit/Signal.h"

#include <cstdint>

namespace velmar::audio
{

/** The contract between the plug-in shell and a block-processing engine. The shell sets the engine
    up for a channel count and a sample rate, resets it, and then feeds it blocks of any length.
    The parameter operations throw std::out_of_range("Parameter index") for an index the engine
    does not have. */
class BaseAudioProcessor
{
public:
    virtual ~BaseAudioProcessor() = default;

    virtual bool setUp(std::int32_t channelCount, double rate) = 0;
    virtual std::int32_t latency() const = 0;
    virtual void parameterRange(std::int32_t index, float& minimum, float& maximum) const = 0;
    virtual float parameter(std::int32_t index) const = 0;
    virtual void setParameter(std::int32_t index, float value) = 0;
    virtual void reset() = 0;
    virtual Signal32 process(const Signal32& input) = 0;

    /** Prepares the memory that processing in blocks of up to maxBlockSize will need, after setUp
        and reset; leaves the stream as reset left it. The default has nothing to prepare. */
    virtual void warmUp(std::int32_t maxBlockSize) { (void)maxBlockSize; }

    std::int32_t getNumChannels() const noexcept { return numChannels; }
    double getSampleRate() const noexcept { return sampleRate; }

protected:
    std::int32_t numChannels = 0;
    double sampleRate = 0.0;
};

} // namespace velmar::audio
