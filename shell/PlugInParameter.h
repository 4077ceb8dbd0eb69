#pragma once

#include "engine/BaseAudioProcessor.h"

#include <juce_core/juce_core.h>

#include <cstdint>

/** One host-visible parameter: a row of the processor's table over one engine setting. The row
    describes the setting and keeps no value; the engine holds it. The range is asked of the engine
    each time, so a row can never disagree with it. A host sees a value from 0 to 1, mapped
    linearly onto the range with no clamp, so that values outside 0 to 1 reach the engine as they
    are.

    Never changed after construction. Allocates only for its texts. */
class PlugInParameter
{
public:
    /** defaultValue is read from the engine now, so it is whatever the engine starts with. */
    PlugInParameter(velmar::audio::BaseAudioProcessor& engine, std::int32_t id, const juce::String& name,
                    const juce::String& unit, float step);

    std::int32_t getId() const noexcept { return id; }
    const juce::String& getName() const noexcept { return name; }
    const juce::String& getUnit() const noexcept { return unit; }
    float getStep() const noexcept { return step; }
    /** In real units. */
    float getDefaultValue() const noexcept { return defaultValue; }

    void getRange(float& minimum, float& maximum) const;
    /** A step as wide as the whole range marks an on/off setting. */
    bool isSwitch() const;

    float toRealValue(float hostValue) const;
    float toHostValue(float realValue) const;

    /** The engine's current value, in real units. */
    float getRealValue() const;

    /** "On " / "Off " for a switch, else the value with two decimals, then a blank and the unit:
        "30.00 %", "2.00 ms". Independent of the C locale, so that hosts always see a point. */
    juce::String textForRealValue(float realValue) const;

private:
    velmar::audio::BaseAudioProcessor* const engine;
    const std::int32_t id;
    const juce::String name;
    const juce::String unit;
    const float step;
    const float defaultValue;
};
