#pragma once

#include "engine/BaseAudioProcessor.h"

#include <juce_core/juce_core.h>

#include <cstdint>

/** A stored set of engine settings with a name. Unlike the parameter table it covers the engine's
    indices directly, so a program also holds settings that no host sees.

    Allocates its value array at construction and nothing after. */
class PlugInProgram
{
public:
    /** All valueCount values start at zero. */
    PlugInProgram(std::int32_t valueCount, const juce::String& name);

    /** Takes the engine's current values for indices 0 to valueCount - 1. */
    void capture(const velmar::audio::BaseAudioProcessor& engine);
    /** Writes the values back to the engine, straight to its settings. */
    void apply(velmar::audio::BaseAudioProcessor& engine) const;

    const juce::String& getName() const noexcept { return name; }
    void setName(const juce::String& newName) { name = newName; }
    std::int32_t getValueCount() const noexcept { return valueCount; }
    float getValue(std::int32_t index) const { return values[index]; }

private:
    juce::Array<float> values;
    std::int32_t valueCount;
    juce::String name;
};
