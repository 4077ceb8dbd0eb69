#include "shell/PlugInProgram.h"

PlugInProgram::PlugInProgram(std::int32_t count, const juce::String& programName)
    : valueCount(count)
    , name(programName)
{
    values.insertMultiple(0, 0.0f, count);
}

void PlugInProgram::capture(const velmar::audio::BaseAudioProcessor& engine)
{
    for (std::int32_t i = 0; i < valueCount; ++i)
        values.set(i, engine.parameter(i));
}

void PlugInProgram::apply(velmar::audio::BaseAudioProcessor& engine) const
{
    // Array's [] answers 0 past its end, so a short array fills the rest with zeros.
    for (std::int32_t i = 0; i < valueCount; ++i)
        engine.setParameter(i, values[i]);
}
