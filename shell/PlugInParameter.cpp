#include "shell/PlugInParameter.h"

#include <locale>
#include <sstream>

PlugInParameter::PlugInParameter(velmar::audio::BaseAudioProcessor& engineToDescribe, std::int32_t engineId,
                                 const juce::String& parameterName, const juce::String& parameterUnit,
                                 float parameterStep)
    : engine(&engineToDescribe)
    , id(engineId)
    , name(parameterName)
    , unit(parameterUnit)
    , step(parameterStep)
    , defaultValue(engineToDescribe.parameter(engineId))
{
}

void PlugInParameter::getRange(float& minimum, float& maximum) const
{
    engine->parameterRange(id, minimum, maximum);
}

bool PlugInParameter::isSwitch() const
{
    float minimum = 0.0f;
    float maximum = 0.0f;
    getRange(minimum, maximum);
    // Exact on purpose: the step literals are chosen so that only a switch matches its width.
    return step == maximum - minimum;
}

float PlugInParameter::toRealValue(float hostValue) const
{
    float minimum = 0.0f;
    float maximum = 0.0f;
    getRange(minimum, maximum);
    return (maximum - minimum) * hostValue + minimum;
}

float PlugInParameter::toHostValue(float realValue) const
{
    float minimum = 0.0f;
    float maximum = 0.0f;
    getRange(minimum, maximum);
    return (realValue - minimum) / (maximum - minimum);
}

float PlugInParameter::getRealValue() const
{
    return engine->parameter(id);
}

juce::String PlugInParameter::textForRealValue(float realValue) const
{
    if (isSwitch())
        return juce::String(realValue > 0.5f ? "On" : "Off") + " " + unit;

    // A host that set a German C locale would otherwise get "30,00 %".
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text.setf(std::ios::fixed);
    text.precision(2);
    text << static_cast<double>(realValue);
    return juce::String(text.str()) + " " + unit;
}
