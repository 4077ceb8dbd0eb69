#include "shell/HostParameter.h"

#include "shell/BasePlugInProcessor.h"
#include "shell/PlugInParameter.h"

HostParameter::HostParameter(BasePlugInProcessor& ownerToAsk, int index, const juce::String& rowName)
    : juce::AudioProcessorParameterWithID(juce::ParameterID(rowName, 1), rowName)
    , owner(ownerToAsk)
    , hostIndex(index)
{
}

float HostParameter::getValue() const
{
    return owner.getParameter(hostIndex);
}

void HostParameter::setValue(float newValue)
{
    owner.setParameter(hostIndex, newValue);
}

float HostParameter::getDefaultValue() const
{
    return owner.getParameterDefaultValue(hostIndex);
}

juce::String HostParameter::getName(int maximumStringLength) const
{
    return owner.getParameterName(hostIndex).substring(0, maximumStringLength);
}

juce::String HostParameter::getLabel() const
{
    // The unit stands inside the text already.
    return {};
}

juce::String HostParameter::getText(float value, int maximumStringLength) const
{
    const auto* row = owner.getParameterRow(hostIndex);
    if (row == nullptr)
        return {};
    return row->textForRealValue(row->toRealValue(value)).substring(0, maximumStringLength);
}

float HostParameter::getValueForText(const juce::String& text) const
{
    const auto* row = owner.getParameterRow(hostIndex);
    if (row == nullptr)
        return 0.0f;
    if (row->isSwitch())
        return text.trim().equalsIgnoreCase("On") || text.getFloatValue() > 0.5f ? 1.0f : 0.0f;
    return row->toHostValue(text.getFloatValue());
}

juce::String HostParameter::getCurrentValueAsText() const
{
    return owner.getParameterText(hostIndex);
}
