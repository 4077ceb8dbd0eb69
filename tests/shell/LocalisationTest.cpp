// Where translations and help pages are found, what the shipped German files hold, and the
// processor in a German session.

#include "shell/BundleResources.h"
#include "shell/Identity.h"
#include "support/ShellProbe.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <string>

namespace
{
/** A scratch bundle with Contents/Resources, removed afterwards. */
struct ScratchBundle
{
    juce::TemporaryFile folder{".lv2"};
    juce::File resources;

    ScratchBundle()
    {
        folder.getFile().createDirectory();
        resources = folder.getFile().getChildFile("Contents/Resources");
        resources.createDirectory();
    }
    ~ScratchBundle() { folder.getFile().deleteRecursively(); }

    juce::File bundle() const { return folder.getFile(); }
    void write(const juce::String& relativePath, const juce::String& text) const
    {
        auto file = resources.getChildFile(relativePath);
        file.getParentDirectory().createDirectory();
        file.replaceWithText(text);
    }
};

/** Every text that the plug-in passes through translate, as translators must key them. */
const char* const translatedKeys[] = {
    "Default",
    "Tindler settings",
    "The sensitivity in percent of the click detection.",
    "Click sensitivity (%)",
    "The maximum length of the removed clicks.",
    "Click length (ms)",
    "Decrackler settings",
    "The sensitivity of the crackle reduction.",
    "Crackle sensitivity (%)\n",
    "Listen to removed signal",
    "Enable or disable the tindle processesing",
    "Enable tindler",
    "Enable or disable the decrackle processesing",
    "Enable decrackler",
    "The amount of crackle reduction in percent.",
    "Crackle reduction (%)",
    "Enables or disables the detection of digital drop-outs. This should be disabled if the recording "
    "does not contain clicks caused by drop-outs.",
    "Detect digital drop-outs",
    "Clicks per second",
    "Time (seconds)",
    "Crackle level (%)",
    "Show drop-down menu for this plug-in",
    "Help...",
    "About",
    "Version",
    tindle::identity::copyrightNotice,
};

/** The controls as each help page must name them, in English and German. */
const std::pair<const char*, const char*> controls[] = {
    {"Enable tindler", "Klickentfernung ein"},
    {"Click sensitivity", "Klick-Empfindlichkeit"},
    {"Click length", "Klicklänge"},
    {"Detect digital drop-outs", "Digitale Aussetzer erkennen"},
    {"Enable decrackler", "Knisterminderung ein"},
    {"Crackle sensitivity", "Knister-Empfindlichkeit"},
    {"Crackle reduction", "Knisterminderung"},
    {"Listen to removed signal", "Entferntes Signal abhören"},
};

// The test program is its own bundle: the build copies the resources beside it.
juce::File shippedResources()
{
    return BundleResources::currentBundle().getChildFile("Contents/Resources");
}
} // namespace

TEST(Localisation, TheBundleOfEachFormat)
{
    const juce::File root("/opt/plugins");
    EXPECT_EQ(BundleResources::bundleOf(root.getChildFile("Tindle.vst3/Contents/x86_64-linux/Tindle.so")),
              root.getChildFile("Tindle.vst3"));
    EXPECT_EQ(BundleResources::bundleOf(root.getChildFile("Tindle.lv2/libTindle.so")),
              root.getChildFile("Tindle.lv2"));
    EXPECT_EQ(BundleResources::bundleOf(root.getChildFile("Standalone/Tindle")),
              root.getChildFile("Standalone"));
    // A program that merely lies somewhere below a bundle's name keeps its own folder.
    EXPECT_EQ(BundleResources::bundleOf(root.getChildFile("old.lv2/a/b/c/Tindle")),
              root.getChildFile("old.lv2/a/b/c"));
    EXPECT_EQ(BundleResources::bundleOf(juce::File("/Tindle")), juce::File("/"));
}

TEST(Localisation, TheLanguageIsTakenWhole)
{
    const juce::File bundle("/opt/plugins/Tindle.lv2");
    EXPECT_EQ(BundleResources::stringTableFile(bundle, "Ostrand", "German-Germany").getFullPathName(),
              "/opt/plugins/Tindle.lv2/Contents/Resources/Ostrand_German-Germany.loc");
    EXPECT_EQ(BundleResources::stringTableFile(bundle, "Ostrand", "de-AT").getFileName(),
              "Ostrand_de-AT.loc");
    EXPECT_EQ(BundleResources::stringTableFile(bundle, "Ostrand", "").getFileName(), "Ostrand_.loc");
}

TEST(Localisation, HelpPagesFallBackToEnglishOnly)
{
    ScratchBundle scratch;
    scratch.write("Ostrand_de/Tindle.html", "de");
    scratch.write("Ostrand_/Tindle.html", "none");
    const auto resources = scratch.resources.getFullPathName();
    EXPECT_EQ(BundleResources::helpPageFile(scratch.bundle(), "Ostrand", "Tindle", "de").getFullPathName(),
              resources + "/Ostrand_de/Tindle.html");
    EXPECT_EQ(BundleResources::helpPageFile(scratch.bundle(), "Ostrand", "Tindle", "").getFullPathName(),
              resources + "/Ostrand_/Tindle.html");
    // No folder of its own: English, which is not checked to exist.
    for (const auto* language : {"fr", "de-AT", "German-Austria"})
        EXPECT_EQ(
            BundleResources::helpPageFile(scratch.bundle(), "Ostrand", "Tindle", language).getFullPathName(),
            resources + "/Ostrand_en/Tindle.html")
            << language;
}

TEST(Localisation, OnlyTheExactLanguagesTableIsLoaded)
{
    ScratchBundle scratch;
    scratch.write("Ostrand_de.loc", "language: German\ncountries: de\n\n\"Default\" = \"Standard\"\n");
    juce::LocalisedStrings::setCurrentMappings(nullptr);

    EXPECT_FALSE(BundleResources::loadStringTable(scratch.bundle(), "Ostrand", "de-AT"));
    EXPECT_EQ(juce::translate("Default"), "Default");
    EXPECT_TRUE(BundleResources::loadStringTable(scratch.bundle(), "Ostrand", "de"));
    EXPECT_EQ(juce::translate("Default"), "Standard");
    EXPECT_EQ(juce::translate("default"), "default") << "keys are case-sensitive";

    // A missing table leaves the one that is there.
    EXPECT_FALSE(BundleResources::loadStringTable(scratch.bundle(), "Ostrand", "fr"));
    EXPECT_EQ(juce::translate("Default"), "Standard");
    tindle::test::ShellProbe english;
    EXPECT_EQ(english.getProgramName(0), juce::translate("Default"));
    juce::LocalisedStrings::setCurrentMappings(nullptr);
}

TEST(Localisation, TheGermanTableIsCompleteUnderEveryGermanName)
{
    const auto primary = shippedResources().getChildFile("Ostrand_German-Germany.loc");
    ASSERT_TRUE(primary.existsAsFile()) << primary.getFullPathName();
    const juce::LocalisedStrings german(primary, false);
    EXPECT_EQ(german.getLanguageName(), "German");
    for (const auto* key : translatedKeys)
        EXPECT_NE(german.translate(key, "<missing>"), "<missing>") << key;
    EXPECT_EQ(german.translate("Default"), "Standard");
    EXPECT_EQ(german.translate("Crackle sensitivity (%)\n"), "Knister-Empfindlichkeit (%)\n");

    for (const auto* language : {"Austrian German-Austria", "Swiss High German-Switzerland", "German-Belgium",
                                 "German-Liechtenstein", "German-Luxembourg", "German-Italy"})
    {
        const auto alias = shippedResources().getChildFile(juce::String("Ostrand_") + language + ".loc");
        EXPECT_TRUE(alias.hasIdenticalContentTo(primary)) << language;
    }
}

TEST(Localisation, HelpPagesExplainEveryControl)
{
    const auto english =
        BundleResources::helpPageFile(BundleResources::currentBundle(), "Ostrand", "Tindle", "en")
            .loadFileAsString();
    const auto german =
        BundleResources::helpPageFile(BundleResources::currentBundle(), "Ostrand", "Tindle", "German-Germany")
            .loadFileAsString();
    ASSERT_TRUE(english.contains("<html")) << "the English help page is missing";
    ASSERT_TRUE(german.contains("<html lang=\"de\"")) << "the German help page is missing";
    for (const auto& [inEnglish, inGerman] : controls)
    {
        EXPECT_TRUE(english.contains(inEnglish)) << inEnglish;
        EXPECT_TRUE(german.contains(juce::CharPointer_UTF8(inGerman))) << inGerman;
    }
    // Units and ranges, as the controls show them.
    for (const auto* text : {"0 to 100 %", "0.1 to 10 ms"})
        EXPECT_TRUE(english.contains(text)) << text;
    for (const auto* text : {"0 bis 100 %", "0,1 bis 10 ms"})
        EXPECT_TRUE(german.contains(text)) << text;
}

// Meaningful under LANG=de_DE.UTF-8 (the shell_tests_german entry, which requires it); elsewhere it
// is skipped.
TEST(LocalisationGerman, AGermanSessionGetsGermanTexts)
{
    const auto language = BundleResources::currentLanguage();
    if (const char* required = std::getenv("TINDLE_TEST_LANGUAGE"))
        ASSERT_EQ(language, required) << "the locale is not installed or not built for the tests";
    else if (language != "German-Germany")
        GTEST_SKIP() << "runs under LANG=de_DE.UTF-8; the language here is \"" << language << "\"";

    // Asking for the language must not move the host's C locale.
    const std::string hostLocale = std::setlocale(LC_ALL, nullptr);
    tindle::test::ShellProbe p;
    EXPECT_EQ(std::setlocale(LC_ALL, nullptr), hostLocale);
    EXPECT_EQ(p.getProgramName(0), "Standard");
    EXPECT_EQ(juce::translate("Detect digital drop-outs"), "Digitale Aussetzer erkennen");
    EXPECT_EQ(juce::translate(tindle::identity::copyrightNotice),
              "Copyright 2024 Velmar Digital\nAlle Rechte vorbehalten.");
    const auto help =
        BundleResources::helpPageFile(BundleResources::currentBundle(), tindle::identity::resourcePrefix,
                                      tindle::identity::helpStem, language);
    EXPECT_EQ(help.getParentDirectory().getFileName(), "Ostrand_German-Germany");
    EXPECT_TRUE(help.existsAsFile());

    // Parameter texts are not translated, and keep their point even in a host that runs in the
    // German locale.
    std::setlocale(LC_ALL, "");
    EXPECT_EQ(p.getParameterText(1), "30.00 %");
    EXPECT_EQ(p.getParameterText(0), "On ");
    p.setParameter(2, 0.5f);
    EXPECT_EQ(p.getParameterText(2), "5.05 ms");
    std::setlocale(LC_ALL, hostLocale.c_str());
    juce::LocalisedStrings::setCurrentMappings(nullptr);
}
