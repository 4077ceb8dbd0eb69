#pragma once

#include "engine/BaseAudioProcessor.h"
#include "toolkit/SignalQueue.h"

#include <juce_audio_processors/juce_audio_processors.h>

#include <cstdint>
#include <memory>

/** The one class between a host and the engine. It owns the engine, turns host blocks of any
    length into signals and the engine's bursty output back into blocks of exactly the host's
    length, delayed by the engine's latency. processLock is the one lock of the audio path; it is
    held for the whole of processBlock.

    Allocates: every block makes its input signal and queue blocks (see the engine). */
class BasePlugInProcessor : public juce::AudioProcessor
{
public:
    BasePlugInProcessor(velmar::audio::BaseAudioProcessor* engineToOwn, const juce::String& resourcePrefix);
    ~BasePlugInProcessor() override;

    velmar::audio::BaseAudioProcessor& getEngine() const noexcept { return *engine; }

    const juce::String getName() const override;
    void prepareToPlay(double sampleRate, int estimatedSamplesPerBlock) override;
    void releaseResources() override;
    void processBlock(juce::AudioBuffer<float>& buffer, juce::MidiBuffer& midiMessages) override;
    using juce::AudioProcessor::processBlock;

    bool isBusesLayoutSupported(const BusesLayout& layouts) const override;
    bool silenceInProducesSilenceOut() const override;
    double getTailLengthSeconds() const override;
    bool acceptsMidi() const override;
    bool producesMidi() const override;

    int getNumPrograms() override;
    int getCurrentProgram() override;
    void setCurrentProgram(int index) override;
    const juce::String getProgramName(int index) override;
    void changeProgramName(int index, const juce::String& newName) override;
    void getStateInformation(juce::MemoryBlock& destData) override;
    void setStateInformation(const void* data, int sizeInBytes) override;

protected:
    std::unique_ptr<velmar::audio::BaseAudioProcessor> engine;
    juce::CriticalSection processLock;
    velmar::audio::SignalQueue<velmar::audio::Signal32> deliveryQueue;

private:
    void primeDeliveryQueue();

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR(BasePlugInProcessor)
};
