#include "shell/BasePlugInProcessor.h"

#include "shell/Identity.h"
#include "toolkit/Ipp.h"

using velmar::audio::Signal32;

BasePlugInProcessor::BasePlugInProcessor(velmar::audio::BaseAudioProcessor* engineToOwn,
                                         const juce::String& resourcePrefix)
    : juce::AudioProcessor(BusesProperties()
                               .withInput("Input", juce::AudioChannelSet::stereo(), true)
                               .withOutput("Output", juce::AudioChannelSet::stereo(), true))
    , engine(engineToOwn)
{
    juce::ignoreUnused(resourcePrefix);
}

BasePlugInProcessor::~BasePlugInProcessor()
{
    // The engine goes first of all the members.
    engine.reset();
}

const juce::String BasePlugInProcessor::getName() const
{
    return tindle::identity::pluginName;
}

void BasePlugInProcessor::prepareToPlay(double sampleRate, int /*estimatedSamplesPerBlock*/)
{
    // The engine never sees a fractional rate.
    const auto rate = static_cast<double>(static_cast<std::int32_t>(sampleRate));
    engine->setUp(getTotalNumInputChannels(), rate);
    engine->reset();
    setLatencySamples(engine->latency());
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

    Signal32 input(inputs, n);
    for (int c = 0; c < inputs; ++c)
        ippsCopy_32f(buffer.getReadPointer(c), input.channel(c), n);

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
            buffer.copyFrom(c, 0, result.channel(c), n, 1.0f);
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

int BasePlugInProcessor::getNumPrograms()
{
    return 1;
}

int BasePlugInProcessor::getCurrentProgram()
{
    return 0;
}

void BasePlugInProcessor::setCurrentProgram(int /*index*/) {}

const juce::String BasePlugInProcessor::getProgramName(int /*index*/)
{
    return "Default";
}

void BasePlugInProcessor::changeProgramName(int /*index*/, const juce::String& /*newName*/) {}

void BasePlugInProcessor::getStateInformation(juce::MemoryBlock& destData)
{
    destData.reset();
}

void BasePlugInProcessor::setStateInformation(const void* /*data*/, int /*sizeInBytes*/) {}
