#pragma once

#include "engine/BaseAudioProcessor.h"
#include "shell/PlugInParameter.h"
#include "shell/PlugInProgram.h"
#include "toolkit/MemoryPool.h"
#include "toolkit/SignalQueue.h"

#include <juce_audio_processors/juce_audio_processors.h>

#include <cstdint>
#include <memory>

/** The one class between a host and the engine. It owns the engine, turns host blocks of any
    length into signals and the engine's bursty output back into blocks of exactly the host's
    length, delayed by the engine's latency. It also holds the host-visible parameter table, the
    programs and the saved state, all of which read and write the engine's own settings.

    processLock is the one lock of the audio path, re-entrant: held for the whole of processBlock,
    and by setParameter, getParameterDefaultValue, resetParameter, setCurrentProgram and state
    loading, so that no block runs with half a change. Listeners are told on the calling thread
    with it held.

    Parameters reach JUCE's wrappers as HostParameter objects that forward to the index operations
    below, so hosts, automation and setParameterNotifyingHost all come through setParameter.

    Allocates: every block makes its input signal and queue blocks (see the engine); the state
    operations make their streams. */
class BasePlugInProcessor : public juce::AudioProcessor
{
public:
    /** Told of parameter changes, on the thread that made them, with processLock held: it must not
        wait for another thread that needs the lock. */
    class Listener
    {
    public:
        virtual ~Listener() = default;
        /** index is the host index of the parameter that changed, or -1 when all may have. */
        virtual void parameterChanged(int index) = 0;
    };

    /** The state chunk: two magics, a version, a count and id/value records, little-endian. */
    static constexpr char stateMagic1[4] = {'R', 'M', 'L', 'V'};
    static constexpr char stateMagic2[4] = {'D', 'T', 'L', 'V'};
    static constexpr std::uint32_t stateVersion = 0x00010101;
    /** A program call this soon after a state load is ignored, so that a host that restores a
        state and then selects the current program does not undo the restore. */
    static constexpr std::uint32_t programGuardMilliseconds = 200;

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

    // Parameters, by host index. An index below 0 or not below the row count is no parameter and
    // is answered with a neutral value: empty text, -1.0, 0.0, or nothing done.
    int getNumParameters() override;
    const juce::String getParameterName(int index) override;
    using juce::AudioProcessor::getParameterName;
    /** The engine's value as a host value: a switch reads exactly 0.0 or 1.0. */
    float getParameter(int index) override;
    /** "30.00 %", "2.00 ms", "On ", "Off ". Not translated. */
    const juce::String getParameterText(int index) override;
    using juce::AudioProcessor::getParameterText;
    float getParameterDefaultValue(int index) override;
    /** Maps value linearly onto the engine's range, unclamped, and tells the listeners. */
    void setParameter(int index, float value) override;
    /** Puts the row's default back through setParameter. */
    virtual void resetParameter(int index);

    /** The host index of the row over engine index id, or -1. */
    int getParameterIndex(int id) const;
    /** The row over engine index id, or null. */
    const PlugInParameter* getParameterInfo(int id) const;
    /** The row at a host index, or null. */
    const PlugInParameter* getParameterRow(int index) const;

    using juce::AudioProcessor::addListener;
    using juce::AudioProcessor::removeListener;
    /** A null listener and one already present are ignored. Takes processLock. */
    void addListener(Listener* listener);
    /** A listener not present is ignored; a listener may remove itself from parameterChanged.
        Takes processLock, so that no call reaches the listener once this returns. */
    void removeListener(Listener* listener);

    // JUCE 7 marks these index forms deprecated; the editor's sliders use them, so they stand here
    // undeprecated and go through the parameter objects that the wrappers listen to.
    /** setParameter, then the change goes on to the host. */
    void setParameterNotifyingHost(int index, float value);
    void beginParameterChangeGesture(int index);
    void endParameterChangeGesture(int index);

    int getNumPrograms() override;
    int getCurrentProgram() override;
    /** Applies the program and tells the listeners with -1, unless a state was loaded less than
        programGuardMilliseconds ago. An invalid index does nothing. */
    void setCurrentProgram(int index) override;
    /** Empty for an invalid index. */
    const juce::String getProgramName(int index) override;
    void changeProgramName(int index, const juce::String& newName) override;

    /** State and current-program state are the same chunk. */
    void getStateInformation(juce::MemoryBlock& destData) override;
    void getCurrentProgramStateInformation(juce::MemoryBlock& destData) override;
    void setStateInformation(const void* data, int sizeInBytes) override;
    void setCurrentProgramStateInformation(const void* data, int sizeInBytes) override;

protected:
    /** Where the audio path's memory comes from; declared first, so that it outlives every member
        that holds memory from it. */
    velmar::audio::MemoryPool memoryPool;

    /** Appends a row at the next host index, with its host-visible parameter object. */
    void appendParameter(std::unique_ptr<PlugInParameter> row);
    void appendProgram(std::unique_ptr<PlugInProgram> program);

    /** Writes the chunk: header, then each row's engine id and real value. */
    void writeState(juce::OutputStream& stream) const;
    /** Reads a chunk into the engine. True if it was read to the end; nobody acts on the result.
        The checks stand as saved sessions have always been loaded: an id is checked against the
        row count, not against the engine, so the last record of a full chunk (id 7, ResidualMode)
        ends the load there with false: ResidualMode keeps its value and the listeners are not
        told. The length test compares the whole length with count * 8 + 4, and a record that the
        data no longer holds leaves the previous record's id and value in place, which are then
        applied again. */
    bool readState(juce::InputStream& stream);

    /** Walks the listeners from the last to the first, surviving listeners that remove themselves
        or others on the way. */
    void tellListeners(int index);

    juce::Array<Listener*> listeners;
    /** Time::getMillisecondCounter() at the last state load, whatever the load did. */
    std::uint32_t lastStateLoadTime = 0;
    juce::OwnedArray<PlugInParameter> parameters;
    juce::OwnedArray<PlugInProgram> programs;
    std::unique_ptr<velmar::audio::BaseAudioProcessor> engine;
    int currentProgram = 0;
    juce::CriticalSection processLock;
    velmar::audio::SignalQueue<velmar::audio::Signal32> deliveryQueue;

private:
    void primeDeliveryQueue();

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR(BasePlugInProcessor)
};
