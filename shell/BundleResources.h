#pragma once

#include <juce_core/juce_core.h>

/** Where the module's translations and help pages lie, and the loading of the string table.

    The language is taken whole as the system reports it: on Linux JUCE reports the locale's own
    names, "German-Germany" for de_DE.UTF-8, so the files carry those names. There is exactly one
    level of choice for the string table (the user's language or none) and two for the help page
    (the user's language, else English).

    Allocates only its paths and, when loading, the table. */
class BundleResources
{
public:
    /** The folder whose Contents/Resources hold the files, for a module at the given path: the
        nearest enclosing .vst3 or .lv2 bundle (Tindle.vst3/Contents/x86_64-linux/Tindle.so gives
        Tindle.vst3, Tindle.lv2/libTindle.so gives Tindle.lv2), or else the folder that holds the
        module, as for the Standalone program. */
    static juce::File bundleOf(const juce::File& module);

    /** bundleOf the running module: the plug-in's .so, or the program. */
    static juce::File currentBundle();

    /** The user's language as the system gives it: "German-Germany", or empty. The C library's
        locale is left as it was. */
    static juce::String currentLanguage();

    /** bundle/Contents/Resources/<prefix>_<language>.loc */
    static juce::File stringTableFile(const juce::File& bundle, const juce::String& prefix,
                                      const juce::String& language);

    /** bundle/Contents/Resources/<prefix>_<language>/<stem>.html if that exists, else the same in
        <prefix>_en, which is not checked. */
    static juce::File helpPageFile(const juce::File& bundle, const juce::String& prefix,
                                   const juce::String& stem, const juce::String& language);

    /** If the string table exists, makes it the process's translations, with case-sensitive keys,
        replacing the table that was there; otherwise leaves the current one. True if loaded. */
    static bool loadStringTable(const juce::File& bundle, const juce::String& prefix,
                                const juce::String& language);
};
