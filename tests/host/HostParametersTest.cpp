// What a host sees of the parameters, the saved state and the program list of the built bundles,
// loaded through JUCE's own plug-in hosting as a DAW loads them.

#include "shell/BundleResources.h"
#include "shell/Identity.h"
#include "support/HostedPlugin.h"
#include "support/Render.h"
#include "support/StateChunk.h"

#include <juce_audio_processors/juce_audio_processors.h>

#include <pluginterfaces/vst/ivstcomponent.h>
#include <pluginterfaces/vst/ivstunits.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <thread>
#include <vector>

using tindle::test::HostedPlugin;

namespace
{
constexpr double hostRate = 44100.0;
constexpr int maxBlock = 512;
constexpr int chunkSize = 72;

struct Row
{
    const char* name;
    std::int32_t id;
    float hostDefault;
    const char* text;
};

// The table as a host must see it; 1.9 / 9.9 is ClickLength's default of 2 ms on 0.1 to 10 ms.
const Row rows[] = {
    {"EnableTindle", 0, 1.0f, "On "},           {"ClickSensitivity", 1, 0.3f, "30.00 %"},
    {"ClickLength", 2, 1.9f / 9.9f, "2.00 ms"}, {"EnableDecrackle", 4, 1.0f, "On "},
    {"CrackleSensitivity", 5, 0.3f, "30.00 %"}, {"CrackleReduction", 6, 0.3f, "30.00 %"},
    {"ResidualMode", 7, 0.0f, "Off "},
};

HostedPlugin findBundle(const char* formatName)
{
    return HostedPlugin::find(formatName, TINDLE_VST3_BUNDLE, TINDLE_LV2_BUNDLE, tindle::identity::lv2Uri);
}

std::unique_ptr<juce::AudioPluginInstance> instantiate(const HostedPlugin& h)
{
    juce::String error;
    auto instance = h.instantiate(hostRate, maxBlock, error);
    EXPECT_NE(instance, nullptr) << error;
    return instance;
}

bool isVst3(const HostedPlugin& h)
{
    return h.format->getName() == "VST3";
}

/** The plug-in's own parameters by name, leaving out the bypass switch that a wrapper adds. */
std::map<juce::String, juce::AudioProcessorParameter*> ownParameters(juce::AudioPluginInstance& instance)
{
    std::map<juce::String, juce::AudioProcessorParameter*> result;
    for (auto* p : instance.getParameters())
        if (p != instance.getBypassParameter())
            result[p->getName(1024)] = p;
    return result;
}

/** Runs one block, which is when both formats hand queued parameter changes to the plug-in. */
void runOneBlock(juce::AudioPluginInstance& instance)
{
    juce::AudioBuffer<float> buffer(2, maxBlock);
    buffer.clear();
    juce::MidiBuffer midi;
    instance.processBlock(buffer, midi);
    tindle::test::pumpMessages();
}

/** The plug-in's chunk inside what the host saved: VST3 hosts keep the component's state in XML,
    with JUCE's private trailer behind the chunk; LV2 hosts keep a Turtle text with the chunk as a
    string. */
juce::MemoryBlock chunkFrom(const HostedPlugin& h, const juce::MemoryBlock& saved)
{
    juce::MemoryBlock chunk;
    if (isVst3(h))
    {
        const auto xml =
            juce::AudioProcessor::getXmlFromBinary(saved.getData(), static_cast<int>(saved.getSize()));
        if (xml == nullptr || xml->getChildByName("IComponent") == nullptr)
            return {};
        juce::MemoryBlock component;
        component.fromBase64Encoding(xml->getChildByName("IComponent")->getAllSubText());
        const juce::String trailer = "JUCEPrivateData";
        const auto trailerSize = static_cast<size_t>(trailer.length());
        EXPECT_TRUE(
            component.getSize() > chunkSize + trailerSize &&
            std::memcmp(static_cast<const char*>(component.getData()) + component.getSize() - trailerSize,
                        trailer.toRawUTF8(), trailerSize) == 0);
        chunk.append(component.getData(), juce::jmin<size_t>(chunkSize, component.getSize()));
        return chunk;
    }
    const auto text = saved.toString();
    const auto key = juce::String(tindle::identity::lv2Uri) + ":StateString>";
    const auto value =
        text.fromFirstOccurrenceOf(key, false, false).fromFirstOccurrenceOf("\"", false, false);
    chunk.fromBase64Encoding(value.upToFirstOccurrenceOf("\"", false, false));
    return chunk;
}

juce::MemoryBlock savedChunk(const HostedPlugin& h, juce::AudioPluginInstance& instance)
{
    juce::MemoryBlock saved;
    instance.getStateInformation(saved);
    return chunkFrom(h, saved);
}

juce::MemoryBlock blockOf(const tindle::test::Bytes& bytes)
{
    return juce::MemoryBlock(bytes.data(), bytes.size());
}

/** The real values of the records of a chunk, in table order. */
std::vector<float> recordValues(const juce::MemoryBlock& chunk)
{
    std::vector<float> values;
    const auto* bytes = static_cast<const std::uint8_t*>(chunk.getData());
    for (std::size_t k = 0; k < 7 && 16 + 8 * k + 8 <= chunk.getSize(); ++k)
        values.push_back(tindle::test::floatOf(tindle::test::wordAt(bytes + 16 + 8 * k + 4)));
    return values;
}

// Host values set on one instance, and the real values that they must become in the engine.
const float changedHostValues[] = {0.4f, 0.55f, 0.5f, 0.6f, 0.12f, 0.9f, 1.0f};
const std::vector<float> changedRealValues = {0.0f, 55.0f, 5.05f, 1.0f, 12.0f, 90.0f, 1.0f};

void setHostValues(juce::AudioPluginInstance& instance)
{
    auto parameters = ownParameters(instance);
    for (std::size_t k = 0; k < 7; ++k)
        parameters.at(rows[k].name)->setValue(changedHostValues[k]);
    runOneBlock(instance);
}

/** Program names as a VST3 host reads them: JUCE's host lists programs only with a program-change
    parameter, which a plug-in of one program doesn't have, so ask the unit info directly. */
juce::StringArray vst3ProgramNames(juce::AudioPluginInstance& instance)
{
    struct Visitor : juce::ExtensionsVisitor
    {
        juce::StringArray names;
        void visitVST3Client(const VST3Client& client) override
        {
            Steinberg::Vst::IUnitInfo* units = nullptr;
            auto* component = client.getIComponentPtr();
            if (component == nullptr ||
                component->queryInterface(Steinberg::Vst::IUnitInfo_iid, reinterpret_cast<void**>(&units)) !=
                    Steinberg::kResultOk)
                return;
            for (Steinberg::int32 list = 0; list < units->getProgramListCount(); ++list)
            {
                Steinberg::Vst::ProgramListInfo info{};
                units->getProgramListInfo(list, info);
                for (Steinberg::int32 k = 0; k < info.programCount; ++k)
                {
                    Steinberg::Vst::String128 name{};
                    units->getProgramName(info.id, k, name);
                    names.add(juce::String(juce::CharPointer_UTF16(
                        reinterpret_cast<const juce::CharPointer_UTF16::CharType*>(name))));
                }
            }
            units->release();
        }
    } visitor;
    instance.getExtensions(visitor);
    return visitor.names;
}

class HostedParameters : public ::testing::TestWithParam<const char*>
{
};
} // namespace

TEST_P(HostedParameters, ListsTheSevenParametersWithNamesDefaultsAndTexts)
{
    const auto h = findBundle(GetParam());
    ASSERT_TRUE(h.found()) << "the " << GetParam() << " bundle was not found";
    auto instance = instantiate(h);
    ASSERT_NE(instance, nullptr);

    auto parameters = ownParameters(*instance);
    ASSERT_EQ(parameters.size(), 7u);
    for (const auto& row : rows)
    {
        ASSERT_EQ(parameters.count(row.name), 1u) << row.name;
        auto* p = parameters.at(row.name);
        // The LV2 manifest prints defaults with six significant digits.
        EXPECT_NEAR(p->getDefaultValue(), row.hostDefault, 1e-6) << row.name;
        EXPECT_NEAR(p->getValue(), row.hostDefault, 1e-6) << row.name;
        if (isVst3(h))
        {
            EXPECT_EQ(p->getCurrentValueAsText(), row.text) << row.name;
        }
        else
        {
            // LV2 has no call for a plug-in's display text: the host shows the number (README).
            EXPECT_NEAR(p->getCurrentValueAsText().getFloatValue(), row.hostDefault, 1e-6) << row.name;
        }
    }
    if (isVst3(h))
    {
        EXPECT_EQ(parameters.at("ClickLength")->getText(0.5f, 128), "5.05 ms");
        EXPECT_EQ(parameters.at("ClickSensitivity")->getText(1.0f, 128), "100.00 %");
        EXPECT_EQ(parameters.at("EnableTindle")->getText(0.4f, 128), "Off ");
        EXPECT_EQ(parameters.at("ResidualMode")->getText(0.6f, 128), "On ");
    }
}

TEST_P(HostedParameters, SavesTheChunkAndRestoresItWithItsQuirks)
{
    const auto h = findBundle(GetParam());
    ASSERT_TRUE(h.found());
    auto first = instantiate(h);
    ASSERT_NE(first, nullptr);
    ASSERT_TRUE(tindle::test::prepare(*first, 2, hostRate, maxBlock));

    const auto fresh = savedChunk(h, *first);
    EXPECT_EQ(fresh, blockOf(tindle::test::fullStateChunk({1.0f, 30.0f, 2.0f, 1.0f, 30.0f, 30.0f, 0.0f})));
    EXPECT_EQ(fresh.getSize(), static_cast<size_t>(chunkSize));

    // Automation reaches the engine, and the chunk holds what the engine holds, in real units.
    setHostValues(*first);
    juce::MemoryBlock saved;
    first->getStateInformation(saved);
    const auto original = recordValues(chunkFrom(h, saved));
    ASSERT_EQ(original.size(), 7u);
    for (std::size_t k = 0; k < 7; ++k)
        // A host value passes through the format as a double or a float, then is mapped in float.
        EXPECT_NEAR(original[k], changedRealValues[k], 1e-5f * (1.0f + std::abs(changedRealValues[k])))
            << rows[k].name;
    if (isVst3(h))
        EXPECT_EQ(ownParameters(*first).at("ClickLength")->getCurrentValueAsText(), "5.05 ms");

    auto second = instantiate(h);
    ASSERT_NE(second, nullptr);
    ASSERT_TRUE(tindle::test::prepare(*second, 2, hostRate, maxBlock));
    second->setStateInformation(saved.getData(), static_cast<int>(saved.getSize()));
    runOneBlock(*second);

    // Six values arrive; the last record, ResidualMode, ends the load, so it stays off.
    const auto restored = recordValues(savedChunk(h, *second));
    ASSERT_EQ(restored.size(), 7u);
    for (std::size_t k = 0; k < 6; ++k)
        EXPECT_EQ(restored[k], original[k]) << rows[k].name;
    EXPECT_EQ(original[6], 1.0f);
    EXPECT_EQ(restored[6], 0.0f);
}

// Runs in both ctest entries: under LANG=de_DE.UTF-8 (host_tests_german) the name must be German,
// otherwise it is whatever the shipped table for the current language says.
TEST_P(HostedParameters, ProgramNameFollowsTheLanguageGermanIncluded)
{
    const auto h = findBundle(GetParam());
    ASSERT_TRUE(h.found());
    auto instance = instantiate(h);
    ASSERT_NE(instance, nullptr);

    const auto language = BundleResources::currentLanguage();
    if (const char* required = std::getenv("TINDLE_TEST_LANGUAGE"))
        ASSERT_EQ(language, required) << "the locale is not installed or not built for the tests";
    const auto table = BundleResources::stringTableFile(
        BundleResources::bundleOf(juce::File(isVst3(h) ? TINDLE_VST3_BUNDLE "/Contents/x86_64-linux/Tindle.so"
                                                       : TINDLE_LV2_BUNDLE "/libTindle.so")),
        tindle::identity::resourcePrefix, language);
    const juce::String translated = table.existsAsFile()
                                        ? juce::LocalisedStrings(table, false).translate("Default")
                                        : juce::String("Default");
    if (language == "German-Germany")
        EXPECT_EQ(translated, "Standard");

    if (isVst3(h))
    {
        EXPECT_EQ(vst3ProgramNames(*instance), juce::StringArray(translated));
    }
    else
    {
        // LV2 programs are presets that JUCE writes into the bundle's manifest at build time,
        // always untranslated (README).
        ASSERT_EQ(instance->getNumPrograms(), 1);
        EXPECT_EQ(instance->getProgramName(0), "Default");
    }
}

TEST(HostedLv2Program, SelectingThePresetPutsTheDefaultsBack)
{
    const auto h = findBundle("LV2");
    ASSERT_TRUE(h.found());
    auto instance = instantiate(h);
    ASSERT_NE(instance, nullptr);
    ASSERT_TRUE(tindle::test::prepare(*instance, 2, hostRate, maxBlock));
    setHostValues(*instance);

    // A program call within 200 ms of a state load is ignored; wait well past that, whenever the
    // host last loaded a state.
    std::this_thread::sleep_for(std::chrono::milliseconds(400));
    instance->setCurrentProgram(0);
    runOneBlock(*instance);
    EXPECT_EQ(savedChunk(h, *instance),
              blockOf(tindle::test::fullStateChunk({1.0f, 30.0f, 2.0f, 1.0f, 30.0f, 30.0f, 0.0f})));
}

TEST(HostedBundles, CarryTheirResources)
{
    for (const auto& bundle : {juce::File(TINDLE_VST3_BUNDLE), juce::File(TINDLE_LV2_BUNDLE),
                               juce::File(TINDLE_STANDALONE).getParentDirectory()})
    {
        for (const auto* language : {"en", "German-Germany", "Austrian German-Austria"})
            EXPECT_TRUE(BundleResources::helpPageFile(bundle, "Ostrand", "Tindle", language).existsAsFile())
                << bundle.getFullPathName() << " " << language;
        for (const auto* language : {"German-Germany", "Swiss High German-Switzerland"})
            EXPECT_TRUE(BundleResources::stringTableFile(bundle, "Ostrand", language).existsAsFile())
                << bundle.getFullPathName() << " " << language;
    }
}

INSTANTIATE_TEST_SUITE_P(Bundles, HostedParameters, ::testing::Values("VST3", "LV2"));
