#include "editor/BasePluginEditor.h"

BasePluginEditor::BasePluginEditor(BasePlugInProcessor& owner)
    : juce::AudioProcessorEditor(owner)
    , processor(&owner)
{
    setLookAndFeel(&lookAndFeel);
}

BasePluginEditor::~BasePluginEditor()
{
    // Detached first: the look and feel dies before the component base, which still refers to it.
    setLookAndFeel(nullptr);
}
