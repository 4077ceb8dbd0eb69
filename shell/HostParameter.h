#pragma once

#include <juce_audio_processors/juce_audio_processors.h>

class BasePlugInProcessor;

/** What JUCE's VST3 and LV2 wrappers see of one row of the processor's parameter table. It holds
    nothing of its own: every call goes to the processor's parameter operations by host index, so
    the engine stays the only place where the value lives, and a host's change takes processLock
    and tells the processor's listeners like any other setParameter. Its ID is the row's name, so
    that hosts keep automation by name across versions.

    Allocates only for its texts. */
class HostParameter : public juce::AudioProcessorParameterWithID
{
public:
    HostParameter(BasePlugInProcessor& ownerToAsk, int index, const juce::String& rowName);

    float getValue() const override;
    void setValue(float newValue) override;
    float getDefaultValue() const override;
    juce::String getName(int maximumStringLength) const override;
    juce::String getLabel() const override;
    juce::String getText(float value, int maximumStringLength) const override;
    float getValueForText(const juce::String& text) const override;
    juce::String getCurrentValueAsText() const override;

private:
    BasePlugInProcessor& owner;
    const int hostIndex;
};
