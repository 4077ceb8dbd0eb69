#pragma once

#include "shell/BasePlugInProcessor.h"

#include <juce_gui_basics/juce_gui_basics.h>

/** A slider that stands for one engine parameter: it shows the engine's value in the engine's own
    units and range, and speaks to the host in normalised values, with a gesture around each drag.
    It never writes the engine itself: a change goes through the processor, which tells the host.
    Allocates nothing of its own. */
class ParameterSlider : public juce::Slider
{
public:
    explicit ParameterSlider(const juce::String& name);

    /** Takes range, value and default from the engine and the processor's row for parameterId, and
        sends nothing; without such a row the slider stays as it was. May be called again. */
    void bindToParameter(BasePlugInProcessor* owner, velmar::audio::BaseAudioProcessor* engineToRead,
                         int parameterId);

    int getHostIndex() const noexcept { return hostIndex; }
    int getParameterId() const noexcept { return parameterId; }

    void startedDragging() override;
    void stoppedDragging() override;
    void valueChanged() override;

private:
    BasePlugInProcessor* processor = nullptr;
    velmar::audio::BaseAudioProcessor* engine = nullptr;
    int hostIndex = -1;
    int parameterId = -1;
};
