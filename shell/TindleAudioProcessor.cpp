#include "shell/TindleAudioProcessor.h"

#include "engine/Tindler.h"
#include "toolkit/VectorLibrary.h"

TindleAudioProcessor::TindleAudioProcessor(velmar::audio::BaseAudioProcessor* engineToOwn)
    : BasePlugInProcessor(engineToOwn, "Ostrand")
{
}

TindleAudioProcessor::~TindleAudioProcessor() = default;

juce::AudioProcessorEditor* TindleAudioProcessor::createEditor()
{
    return new juce::GenericAudioProcessorEditor(*this);
}

bool TindleAudioProcessor::hasEditor() const
{
    return true;
}

juce::AudioProcessor* JUCE_CALLTYPE createPluginFilter()
{
    velmar::audio::startUpVectorLibrary();
    auto* engine = new velmar::audio::Tindler();
    return new TindleAudioProcessor(engine);
}
