#include "shell/BundleResources.h"

#include <clocale>
#include <mutex>
#include <string>

namespace
{
juce::String resourcesPath(const juce::File& bundle)
{
    return bundle.getFullPathName() + "/Contents/Resources";
}
} // namespace

juce::File BundleResources::bundleOf(const juce::File& module)
{
    // A VST3 module lies in Contents/<architecture>, an LV2 module at the bundle's top; looking no
    // higher keeps a Standalone that merely sits below such a folder out of it.
    auto folder = module.getParentDirectory();
    for (int depth = 0; depth < 3 && !folder.isRoot(); ++depth, folder = folder.getParentDirectory())
        if (folder.hasFileExtension(".vst3;.lv2"))
            return folder;
    return module.getParentDirectory();
}

juce::File BundleResources::currentBundle()
{
    return bundleOf(juce::File::getSpecialLocation(juce::File::currentApplicationFile));
}

juce::String BundleResources::currentLanguage()
{
    // JUCE asks glibc with setlocale(LC_ALL, "") and then leaves the whole process, the host
    // included, in the user's locale, where printf and strtod write and read "0,5". setlocale is
    // not thread-safe: processors made on several threads at once (the renderer's jobs) take turns.
    static std::mutex localeLock;
    const std::lock_guard<std::mutex> lock(localeLock);
    const std::string hostLocale = std::setlocale(LC_ALL, nullptr);
    const auto language = juce::SystemStats::getDisplayLanguage();
    std::setlocale(LC_ALL, hostLocale.c_str());
    return language;
}

juce::File BundleResources::stringTableFile(const juce::File& bundle, const juce::String& prefix,
                                            const juce::String& language)
{
    return juce::File(resourcesPath(bundle) + juce::File::getSeparatorString() + prefix + "_" + language +
                      ".loc");
}

juce::File BundleResources::helpPageFile(const juce::File& bundle, const juce::String& prefix,
                                         const juce::String& stem, const juce::String& language)
{
    const juce::File page(resourcesPath(bundle) + "/" + prefix + "_" + language + "/" + stem + ".html");
    if (page.existsAsFile())
        return page;
    return juce::File(resourcesPath(bundle) + "/" + prefix + "_en/" + stem + ".html");
}

bool BundleResources::loadStringTable(const juce::File& bundle, const juce::String& prefix,
                                      const juce::String& language)
{
    const auto table = stringTableFile(bundle, prefix, language);
    if (!table.existsAsFile())
        return false;
    juce::LocalisedStrings::setCurrentMappings(new juce::LocalisedStrings(table, false));
    return true;
}
