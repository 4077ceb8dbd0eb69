#pragma once

#include <juce_audio_processors/juce_audio_processors.h>

#include <cstdint>
#include <vector>

namespace tindle::test
{

using Channels = std::vector<std::vector<float>>;

/** Runs input through processor's processBlock in blocks of the given sizes (repeated until the
    input is used up) and returns what came out, channel by channel. The processor must have been
    prepared for input.size() channels. */
inline Channels renderBlocks(juce::AudioProcessor& processor, const Channels& input,
                             const std::vector<std::int32_t>& blockSizes)
{
    const auto channels = static_cast<int>(input.size());
    const auto total = static_cast<std::int32_t>(input[0].size());
    Channels output(input.size());
    juce::AudioBuffer<float> buffer;
    juce::MidiBuffer midi;
    std::int32_t position = 0;
    std::size_t next = 0;
    while (position < total)
    {
        const std::int32_t n = std::min(blockSizes[next++ % blockSizes.size()], total - position);
        buffer.setSize(channels, n, false, false, true);
        for (int c = 0; c < channels; ++c)
            buffer.copyFrom(c, 0, input[static_cast<std::size_t>(c)].data() + position, n);
        processor.processBlock(buffer, midi);
        for (int c = 0; c < channels; ++c)
            output[static_cast<std::size_t>(c)].insert(output[static_cast<std::size_t>(c)].end(),
                                                       buffer.getReadPointer(c),
                                                       buffer.getReadPointer(c) + n);
        position += n;
    }
    return output;
}

/** Prepares processor for the channel count (in = out) and rate. */
inline bool prepare(juce::AudioProcessor& processor, int channels, double rate, int blockSize)
{
    const auto set = channels == 1 ? juce::AudioChannelSet::mono() : juce::AudioChannelSet::stereo();
    juce::AudioProcessor::BusesLayout layout;
    layout.inputBuses.add(set);
    layout.outputBuses.add(set);
    if (!processor.setBusesLayout(layout))
        return false;
    processor.setRateAndBufferSizeDetails(rate, blockSize);
    processor.prepareToPlay(rate, blockSize);
    return true;
}

} // namespace tindle::test
