#pragma once

#include "shell/BasePlugInProcessor.h"

/** Tindle's processor: the shell around a Tindler engine, with Tindle's parameters and program. */
class TindleAudioProcessor : public BasePlugInProcessor
{
public:
    explicit TindleAudioProcessor(velmar::audio::BaseAudioProcessor* engineToOwn);
    ~TindleAudioProcessor() override;

    /** The plug-in's window; defined with the editor's classes, in the editor library. */
    juce::AudioProcessorEditor* createEditor() override;
    bool hasEditor() const override;
};

/** The factory that every host adapter calls. */
juce::AudioProcessor* JUCE_CALLTYPE createPluginFilter();
