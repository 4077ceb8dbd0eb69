#pragma once

#include "editor/VelmarLookAndFeel.h"
#include "shell/BasePlugInProcessor.h"

#include <juce_audio_processors/juce_audio_processors.h>

/** The base of the plug-in's window: ties the editor to its processor and gives the whole window
    the plug-in's look. Allocates nothing beyond JUCE's editor. */
class BasePluginEditor : public juce::AudioProcessorEditor
{
public:
    explicit BasePluginEditor(BasePlugInProcessor& owner);
    ~BasePluginEditor() override;

protected:
    BasePlugInProcessor* processor;
    VelmarLookAndFeel lookAndFeel;
};
