#pragma once

#include <juce_audio_processors/juce_audio_processors.h>

#include <memory>

namespace tindle::test
{

/** A built bundle as JUCE's plug-in hosting finds it: its format and its description. */
struct HostedPlugin
{
    std::unique_ptr<juce::AudioPluginFormat> format;
    juce::PluginDescription description;

    bool found() const { return description.name.isNotEmpty(); }

    /** Finds the VST3 or the LV2 bundle of the build tree ("VST3" or "LV2"). */
    static HostedPlugin find(const juce::String& formatName, const juce::String& vst3Bundle,
                             const juce::String& lv2Bundle, const juce::String& lv2Uri)
    {
        HostedPlugin h;
        juce::String identifier;
        if (formatName == "VST3")
        {
            h.format = std::make_unique<juce::VST3PluginFormat>();
            identifier = vst3Bundle;
        }
        else
        {
            h.format = std::make_unique<juce::LV2PluginFormat>();
            h.format->searchPathsForPlugins(
                juce::FileSearchPath(juce::File(lv2Bundle).getParentDirectory().getFullPathName()), true,
                false);
            identifier = lv2Uri;
        }
        juce::OwnedArray<juce::PluginDescription> found;
        h.format->findAllTypesForFile(found, identifier);
        if (found.size() == 1)
            h.description = *found[0];
        return h;
    }

    std::unique_ptr<juce::AudioPluginInstance> instantiate(double rate, int maxBlock,
                                                           juce::String& error) const
    {
        return format->createInstanceFromDescription(description, rate, maxBlock, error);
    }
};

/** Plug-ins report some changes (the VST3 latency and parameter values among them) through the
    message thread. */
inline void pumpMessages(int milliseconds = 50)
{
    juce::MessageManager::getInstance()->runDispatchLoopUntil(milliseconds);
}

} // namespace tindle::test
