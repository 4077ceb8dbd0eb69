#include "shell/BasePlugInProcessor.h"

#include "shell/BundleResources.h"
#include "shell/HostParameter.h"
#include "shell/Identity.h"
#include "toolkit/Ipp.h"

#include <cfloat>
#include <cmath>

#include <cstring>

using velmar::audio::Signal32;

BasePlugInProcessor::BasePlugInProcessor(velmar::audio::BaseAudioProcessor* engineToOwn,
                                         const juce::String& resourcePrefix)
    : juce::AudioProcessor(BusesProperties()
                               .withInput("Input", juce::AudioChannelSet::stereo(), true)
                               .withOutput("Output", juce::AudioChannelSet::stereo(), true))
    , engine(engineToOwn)
{
    BundleResources::loadStringTable(BundleResources::currentBundle(), resourcePrefix,
                                     BundleResources::currentLanguage());
}

BasePlugInProcessor::~BasePlugInProcessor()
{
    // The engine goes first of all the members; the memory pool, which it and the queue drew from,
    // goes last.
    engine.reset();
}

const juce::String BasePlugInProcessor::getName() const
{
    return tindle::identity::pluginName;
}

void BasePlugInProcessor::prepareToPlay(double sampleRate, int estimatedSamplesPerBlock)
{
    const velmar::audio::ScopedMemoryPool usePool(memoryPool);
    // The engine never sees a fractional rate.
    const auto rate = static_cast<double>(static_cast<std::int32_t>(sampleRate));
    engine->setUp(getTotalNumInputChannels(), rate);
    engine->reset();
    setLatencySamples(engine->latency());
    // The memory of the audio path is made here, so that processBlock takes none from the system
    // for blocks up to this size (a larger one takes its share once).
    const int maxBlock = std::max(1, estimatedSamplesPerBlock);
    engine->warmUp(maxBlock);
    deliveryQueue.reserve(getTotalNumOutputChannels(),
                          static_cast<std::int64_t>(getLatencySamples()) + 2 * maxBlock);
    primeDeliveryQueue();
}

void BasePlugInProcessor::primeDeliveryQueue()
{
    deliveryQueue.clear();
    // These zeros are the latency that the host compensates; they also fix the queue's width.
    Signal32 zeros(getTotalNumOutputChannels(), getLatencySamples());
    for (std::int32_t c = 0; c < zeros.channelCount(); ++c)
        ippsZero_32f(zeros.channel(c), zeros.length());
    deliveryQueue.push(zeros);
}

void BasePlugInProcessor::releaseResources() {}

void BasePlugInProcessor::processBlock(juce::AudioBuffer<float>& buffer, juce::MidiBuffer& /*midiMessages*/)
{
    const juce::ScopedLock lock(processLock);
    const velmar::audio::ScopedMemoryPool usePool(memoryPool);
    const int n = buffer.getNumSamples();
    const int inputs = getTotalNumInputChannels();
    const int outputs = getTotalNumOutputChannels();

    // Guards against a setUp that did not come through prepareToPlay; in ordinary running the
    // engine's latency changes only there.
    if (engine->latency() != getLatencySamples())
    {
        setLatencySamples(engine->latency());
        primeDeliveryQueue();
    }

    // Non-finite samples come in as silence: one would otherwise spoil the prediction of every
    // frame it falls into, and the restorer treats the gap like any other damage.
    Signal32 input(inputs, n);
    for (int c = 0; c < inputs; ++c)
    {
        const float* in = buffer.getReadPointer(c);
        float* out = input.channel(c);
        for (int i = 0; i < n; ++i)
            out[i] = std::isfinite(in[i]) ? in[i] : 0.0f;
    }

    deliveryQueue.push(engine->process(input));

    Signal32 result;
    if (deliveryQueue.sampleCount() < n)
    {
        result = Signal32(inputs, n);
        for (int c = 0; c < inputs; ++c)
            ippsZero_32f(result.channel(c), n);
    }
    else
        result = deliveryQueue.pop(n);

    if (n == 0)
        return;
    for (int c = 0; c < outputs; ++c)
    {
        if (c < inputs)
        {
            // Values below the smallest normal float leave as zeros: the host's thread may keep
            // denormals, and they would slow down everything that the host does with them next.
            float* out = buffer.getWritePointer(c);
            const float* in = result.channel(c);
            for (int i = 0; i < n; ++i)
                out[i] = std::fabs(in[i]) < FLT_MIN ? 0.0f : in[i];
        }
        else
            buffer.clear(c, 0, n);
    }
}

bool BasePlugInProcessor::isBusesLayoutSupported(const BusesLayout& layouts) const
{
    const auto in = layouts.getMainInputChannelSet();
    const auto out = layouts.getMainOutputChannelSet();
    return in == out && (in == juce::AudioChannelSet::stereo() || in == juce::AudioChannelSet::mono());
}

bool BasePlugInProcessor::silenceInProducesSilenceOut() const
{
    return true;
}

double BasePlugInProcessor::getTailLengthSeconds() const
{
    return 0.0;
}

bool BasePlugInProcessor::acceptsMidi() const
{
    return false;
}

bool BasePlugInProcessor::producesMidi() const
{
    return false;
}

const PlugInParameter* BasePlugInProcessor::getParameterRow(int index) const
{
    return parameters[index];
}

int BasePlugInProcessor::getNumParameters()
{
    return parameters.size();
}

const juce::String BasePlugInProcessor::getParameterName(int index)
{
    if (const auto* row = getParameterRow(index))
        return row->getName();
    return {};
}

float BasePlugInProcessor::getParameter(int index)
{
    if (const auto* row = getParameterRow(index))
        return row->toHostValue(row->getRealValue());
    return -1.0f;
}

const juce::String BasePlugInProcessor::getParameterText(int index)
{
    if (const auto* row = getParameterRow(index))
        return row->textForRealValue(row->getRealValue());
    return {};
}

float BasePlugInProcessor::getParameterDefaultValue(int index)
{
    const juce::ScopedLock lock(processLock);
    if (const auto* row = getParameterRow(index))
        return row->toHostValue(row->getDefaultValue());
    return 0.0f;
}

void BasePlugInProcessor::setParameter(int index, float value)
{
    const juce::ScopedLock lock(processLock);
    const auto* row = getParameterRow(index);
    if (row == nullptr)
        return;
    engine->setParameter(row->getId(), row->toRealValue(value));
    tellListeners(index);
}

void BasePlugInProcessor::resetParameter(int index)
{
    const juce::ScopedLock lock(processLock);
    if (const auto* row = getParameterRow(index))
        setParameter(index, row->toHostValue(row->getDefaultValue()));
}

int BasePlugInProcessor::getParameterIndex(int id) const
{
    for (int i = 0; i < parameters.size(); ++i)
        if (parameters.getUnchecked(i)->getId() == id)
            return i;
    return -1;
}

const PlugInParameter* BasePlugInProcessor::getParameterInfo(int id) const
{
    return getParameterRow(getParameterIndex(id));
}

void BasePlugInProcessor::appendParameter(std::unique_ptr<PlugInParameter> row)
{
    const int index = parameters.size();
    const auto name = row->getName();
    parameters.add(row.release());
    addParameter(new HostParameter(*this, index, name));
}

// Under processLock, which the walk in tellListeners holds: the editor leaves the list on the
// message thread while automation may be telling it on another, and once removeListener returns
// no call can still reach a listener about to be destroyed. The lock is re-entrant, so a listener
// may still leave from inside its own call.
void BasePlugInProcessor::addListener(Listener* listener)
{
    const juce::ScopedLock lock(processLock);
    if (listener != nullptr)
        listeners.addIfNotAlreadyThere(listener);
}

void BasePlugInProcessor::removeListener(Listener* listener)
{
    const juce::ScopedLock lock(processLock);
    listeners.removeFirstMatchingValue(listener);
}

void BasePlugInProcessor::tellListeners(int index)
{
    for (int i = listeners.size() - 1; i >= 0; --i)
    {
        // A listener may have removed itself or others; go on from what is left.
        if (i >= listeners.size())
            i = listeners.size() - 1;
        if (i < 0)
            break;
        listeners.getUnchecked(i)->parameterChanged(index);
    }
}

void BasePlugInProcessor::setParameterNotifyingHost(int index, float value)
{
    if (auto* parameter = getParameters()[index])
        parameter->setValueNotifyingHost(value);
}

void BasePlugInProcessor::beginParameterChangeGesture(int index)
{
    if (auto* parameter = getParameters()[index])
        parameter->beginChangeGesture();
}

void BasePlugInProcessor::endParameterChangeGesture(int index)
{
    if (auto* parameter = getParameters()[index])
        parameter->endChangeGesture();
}

void BasePlugInProcessor::appendProgram(std::unique_ptr<PlugInProgram> program)
{
    programs.add(program.release());
}

int BasePlugInProcessor::getNumPrograms()
{
    return programs.size();
}

int BasePlugInProcessor::getCurrentProgram()
{
    return currentProgram;
}

void BasePlugInProcessor::setCurrentProgram(int index)
{
    const juce::ScopedLock lock(processLock);
    if (juce::Time::getMillisecondCounter() - lastStateLoadTime < programGuardMilliseconds)
        return;
    if (!juce::isPositiveAndBelow(index, programs.size()))
        return;
    currentProgram = index;
    programs.getUnchecked(index)->apply(*engine);
    tellListeners(-1);
}

const juce::String BasePlugInProcessor::getProgramName(int index)
{
    if (const auto* program = programs[index])
        return program->getName();
    return {};
}

void BasePlugInProcessor::changeProgramName(int index, const juce::String& newName)
{
    if (auto* program = programs[index])
        program->setName(newName);
}

void BasePlugInProcessor::getStateInformation(juce::MemoryBlock& destData)
{
    getCurrentProgramStateInformation(destData);
}

void BasePlugInProcessor::getCurrentProgramStateInformation(juce::MemoryBlock& destData)
{
    juce::MemoryOutputStream stream(destData, false);
    writeState(stream);
}

void BasePlugInProcessor::setStateInformation(const void* data, int sizeInBytes)
{
    const juce::ScopedLock lock(processLock);
    setCurrentProgramStateInformation(data, sizeInBytes);
}

void BasePlugInProcessor::setCurrentProgramStateInformation(const void* data, int sizeInBytes)
{
    const juce::ScopedLock lock(processLock);
    juce::MemoryInputStream stream(data, static_cast<size_t>(juce::jmax(0, sizeInBytes)), false);
    readState(stream);
    lastStateLoadTime = juce::Time::getMillisecondCounter();
}

void BasePlugInProcessor::writeState(juce::OutputStream& stream) const
{
    stream.write(stateMagic1, sizeof(stateMagic1));
    stream.write(stateMagic2, sizeof(stateMagic2));
    stream.writeInt(static_cast<int>(stateVersion));
    stream.writeInt(parameters.size());
    for (const auto* row : parameters)
    {
        stream.writeInt(row->getId());
        stream.writeFloat(row->getRealValue());
    }
}

namespace
{
// A read that the data cannot fill delivers nothing: the target keeps what it held.
template <typename Word>
void readWord(juce::InputStream& stream, Word& target)
{
    static_assert(sizeof(Word) == 4);
    char bytes[4];
    if (stream.read(bytes, 4) == 4)
        target = static_cast<Word>(juce::ByteOrder::littleEndianInt(bytes));
}

void readWord(juce::InputStream& stream, float& target)
{
    std::int32_t bits = 0;
    std::memcpy(&bits, &target, 4);
    readWord(stream, bits);
    std::memcpy(&target, &bits, 4);
}
} // namespace

bool BasePlugInProcessor::readState(juce::InputStream& stream)
{
    const juce::ScopedLock lock(processLock);
    const auto length = stream.getTotalLength();
    if (length < 16)
        return false;

    char magic1[4] = {};
    char magic2[4] = {};
    std::uint32_t version = 0;
    stream.read(magic1, 4);
    stream.read(magic2, 4);
    readWord(stream, version);
    if (std::memcmp(magic1, stateMagic1, 4) != 0 || std::memcmp(magic2, stateMagic2, 4) != 0)
        return false;

    std::int32_t count = 0;
    readWord(stream, count);
    // Whole length against count * 8 + 4, as chunks have always been checked; 64 bits so that a
    // wild count cannot wrap into a small number.
    if (count >= 1 && length >= static_cast<juce::int64>(count) * 8 + 4)
    {
        // No record before the first: one the data cannot hold is no parameter at all.
        std::int32_t id = -1;
        float value = 0.0f;
        for (std::int32_t k = 0; k < count; ++k)
        {
            readWord(stream, id);
            readWord(stream, value);
            if (id < 0 || id >= parameters.size())
                return false;
            engine->setParameter(id, value);
        }
    }
    tellListeners(-1);
    return true;
}
