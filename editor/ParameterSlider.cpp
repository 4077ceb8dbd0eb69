#include "editor/ParameterSlider.h"

ParameterSlider::ParameterSlider(const juce::String& name)
    : juce::Slider(name)
{
}

void ParameterSlider::bindToParameter(BasePlugInProcessor* owner,
                                      velmar::audio::BaseAudioProcessor* engineToRead, int id)
{
    processor = owner;
    engine = engineToRead;
    parameterId = id;
    hostIndex = processor->getParameterIndex(parameterId);
    const PlugInParameter* row = processor->getParameterInfo(parameterId);
    if (row == nullptr)
        return;
    float minimum = 0.0f;
    float maximum = 0.0f;
    engine->parameterRange(parameterId, minimum, maximum);
    setRange(static_cast<double>(minimum), static_cast<double>(maximum), static_cast<double>(row->getStep()));
    setValue(static_cast<double>(engine->parameter(parameterId)), juce::dontSendNotification);
    setDoubleClickReturnValue(true, static_cast<double>(row->getDefaultValue()));
}

void ParameterSlider::startedDragging()
{
    if (processor != nullptr)
        processor->beginParameterChangeGesture(hostIndex);
}

void ParameterSlider::stoppedDragging()
{
    if (processor != nullptr)
        processor->endParameterChangeGesture(hostIndex);
}

void ParameterSlider::valueChanged()
{
    if (engine == nullptr || processor == nullptr)
        return;
    float minimum = 0.0f;
    float maximum = 0.0f;
    engine->parameterRange(parameterId, minimum, maximum);
    const auto normalised = static_cast<float>((getValue() - static_cast<double>(minimum)) /
                                               static_cast<double>(maximum - minimum));
    processor->setParameterNotifyingHost(hostIndex, normalised);
}
