// The host-visible parameter table: rows, mapping, texts, listeners, and what JUCE's wrappers see.

#include "support/ShellProbe.h"
#include "support/TestSignals.h"

#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <thread>

using tindle::test::RecordingListener;
using tindle::test::ShellProbe;
using velmar::audio::Tindler;

namespace
{
struct Row
{
    const char* name;
    int id;
    const char* unit;
    float step;
    float hostDefault;
    const char* text;
};

// Written out from the table that hosts rely on, not read from the code under test.
const Row rows[] = {
    {"EnableTindle", 0, "", 1.0f, 1.0f, "On "},
    {"ClickSensitivity", 1, "%", 0.1f, 0.3f, "30.00 %"},
    {"ClickLength", 2, "ms", 0.1f, 1.9f / 9.9f, "2.00 ms"},
    {"EnableDecrackle", 4, "", 1.0f, 1.0f, "On "},
    {"CrackleSensitivity", 5, "%", 0.1f, 0.3f, "30.00 %"},
    {"CrackleReduction", 6, "%", 0.1f, 0.3f, "30.00 %"},
    {"ResidualMode", 7, "", 1.0f, 0.0f, "Off "},
};
} // namespace

TEST(ParameterTable, SevenRowsOverTheEngineIndices)
{
    ShellProbe p;
    ASSERT_EQ(p.getNumParameters(), 7);
    for (int index = 0; index < 7; ++index)
    {
        const auto& row = rows[index];
        EXPECT_EQ(p.getParameterName(index), row.name);
        EXPECT_EQ(p.getParameterText(index), row.text) << row.name;
        // Defaults are the engine's real values mapped in float: exact but for one rounding.
        EXPECT_NEAR(p.getParameterDefaultValue(index), row.hostDefault, 1e-7f) << row.name;
        EXPECT_NEAR(p.getParameter(index), row.hostDefault, 1e-7f) << row.name;
        EXPECT_EQ(p.getParameterIndex(row.id), index);
        const auto* info = p.getParameterInfo(row.id);
        ASSERT_NE(info, nullptr);
        EXPECT_EQ(info->getName(), row.name);
        EXPECT_EQ(info->getUnit(), row.unit);
        EXPECT_EQ(info->getStep(), row.step);
        EXPECT_EQ(info->isSwitch(), row.step == 1.0f) << row.name;
    }
    EXPECT_EQ(p.getParameterIndex(Tindler::DetectDropouts), -1);
    EXPECT_EQ(p.getParameterInfo(Tindler::DetectDropouts), nullptr);
    EXPECT_EQ(p.getParameterIndex(8), -1);
    EXPECT_EQ(p.getParameterIndex(-1), -1);
}

TEST(ParameterTable, NoSuchIndexIsAnsweredNeutrallyAndChangesNothing)
{
    ShellProbe p;
    RecordingListener listener;
    p.addListener(&listener);
    const auto before = p.engineValues();
    for (const int index : {-1, 7, 8, 100, INT_MIN, INT_MAX})
    {
        EXPECT_EQ(p.getParameter(index), -1.0f) << index;
        EXPECT_EQ(p.getParameterName(index), "") << index;
        EXPECT_EQ(p.getParameterText(index), "") << index;
        EXPECT_EQ(p.getParameterDefaultValue(index), 0.0f) << index;
        EXPECT_EQ(p.getParameterRow(index), nullptr) << index;
        p.setParameter(index, 0.5f);
        p.resetParameter(index);
        p.setParameterNotifyingHost(index, 0.5f);
    }
    EXPECT_EQ(p.engineValues(), before);
    EXPECT_TRUE(listener.told.empty());
    p.removeListener(&listener);
}

TEST(ParameterTable, LinearMappingBothWaysWithoutClamp)
{
    ShellProbe p;
    auto& engine = p.getEngine();

    p.setParameter(2, 0.5f);
    // (10 - 0.1) * 0.5 + 0.1 in float: one rounding away from 5.05.
    EXPECT_NEAR(engine.parameter(Tindler::ClickLength), 5.05f, 1e-6f);
    EXPECT_EQ(p.getParameterText(2), "5.05 ms");
    EXPECT_NEAR(p.getParameter(2), 0.5f, 1e-6f);
    p.setParameter(2, 0.0f);
    EXPECT_NEAR(engine.parameter(Tindler::ClickLength), 0.1f, 1e-7f);
    EXPECT_EQ(p.getParameterText(2), "0.10 ms");
    p.setParameter(2, 1.0f);
    EXPECT_EQ(p.getParameterText(2), "10.00 ms");

    p.setParameter(1, 0.5f);
    EXPECT_EQ(engine.parameter(Tindler::ClickSensitivity), 50.0f);
    EXPECT_EQ(p.getParameterText(1), "50.00 %");
    p.setParameter(1, 1.5f);
    EXPECT_EQ(engine.parameter(Tindler::ClickSensitivity), 150.0f);
    EXPECT_EQ(p.getParameter(1), 1.5f);
    EXPECT_EQ(p.getParameterText(1), "150.00 %");
    p.setParameter(5, -0.25f);
    EXPECT_EQ(engine.parameter(Tindler::CrackleReduction), -25.0f);
    EXPECT_EQ(p.getParameterText(5), "-25.00 %");

    // A switch passes its host value on; the engine turns it on above one half.
    p.setParameter(0, 0.4f);
    EXPECT_EQ(engine.parameter(Tindler::EnableTindle), 0.0f);
    EXPECT_EQ(p.getParameter(0), 0.0f);
    EXPECT_EQ(p.getParameterText(0), "Off ");
    p.setParameter(0, 0.6f);
    EXPECT_EQ(p.getParameter(0), 1.0f);
    EXPECT_EQ(p.getParameterText(0), "On ");
    p.setParameter(6, 1.0f);
    EXPECT_EQ(engine.parameter(Tindler::ResidualMode), 1.0f);
    EXPECT_EQ(p.getParameterText(6), "On ");
    p.setParameter(3, 0.0f);
    EXPECT_EQ(engine.parameter(Tindler::EnableDecrackle), 0.0f);
    EXPECT_EQ(engine.parameter(Tindler::DetectDropouts), 0.0f) << "engine index 3 has no row";
}

TEST(ParameterTable, EachRowWritesItsOwnEngineIndexAndReadsBackWhatWasWritten)
{
    auto rng = tindle::test::seededGenerator("parameter round trip");
    std::uniform_real_distribution<float> anyValue(-1.0f, 2.0f);
    for (int index = 0; index < 7; ++index)
    {
        ShellProbe p;
        const auto before = p.engineValues();
        const float value = rows[index].step == 1.0f ? 0.75f : anyValue(rng);
        p.setParameter(index, value);
        auto after = p.engineValues();
        for (int id = 0; id < Tindler::parameterCount; ++id)
            if (id != rows[index].id)
                EXPECT_EQ(after[static_cast<std::size_t>(id)], before[static_cast<std::size_t>(id)])
                    << rows[index].name << " touched engine index " << id;
        // Two float roundings (to real units and back) on values of order 1.
        EXPECT_NEAR(p.getParameter(index), rows[index].step == 1.0f ? 1.0f : value, 2e-6f)
            << rows[index].name;
        p.resetParameter(index);
        EXPECT_NEAR(p.getParameter(index), rows[index].hostDefault, 1e-7f) << rows[index].name;
    }
}

TEST(ParameterTable, ListenersAreToldOnceWithTheHostIndex)
{
    ShellProbe p;
    RecordingListener listener;
    p.addListener(static_cast<BasePlugInProcessor::Listener*>(nullptr));
    p.addListener(&listener);
    p.addListener(&listener);
    p.setParameter(4, 0.7f);
    EXPECT_EQ(listener.told, std::vector<int>{4});
    p.resetParameter(4);
    EXPECT_EQ(listener.told, (std::vector<int>{4, 4}));
    EXPECT_NEAR(p.getParameter(4), 0.3f, 1e-7f);

    RecordingListener stranger;
    p.removeListener(&stranger);
    p.removeListener(&listener);
    p.setParameter(4, 0.1f);
    EXPECT_EQ(listener.told.size(), 2u);
}

TEST(ParameterTable, TheWalkSurvivesListenersThatLeave)
{
    ShellProbe p;
    std::vector<const char*> calls;
    RecordingListener first, second, third;
    first.onCall = [&] { calls.push_back("first"); };
    second.onCall = [&]
    {
        calls.push_back("second");
        p.removeListener(&second);
    };
    third.onCall = [&] { calls.push_back("third"); };
    p.addListener(&first);
    p.addListener(&second);
    p.addListener(&third);

    // From the last to the first; the second leaving does not cost the first its call.
    p.setParameter(1, 0.2f);
    EXPECT_EQ(calls, (std::vector<const char*>{"third", "second", "first"}));

    // A listener that empties the list ends the walk.
    calls.clear();
    third.onCall = [&]
    {
        calls.push_back("third");
        p.removeListener(&first);
        p.removeListener(&third);
    };
    p.setParameter(1, 0.3f);
    EXPECT_EQ(calls, std::vector<const char*>{"third"});
    p.setParameter(1, 0.4f);
    EXPECT_EQ(calls.size(), 1u);
}

TEST(ParameterTable, ListenersRunWithProcessLockHeld)
{
    ShellProbe p;
    RecordingListener listener;
    std::vector<bool> otherThreadGotTheLock;
    listener.onCall = [&]
    {
        bool got = false;
        std::thread other(
            [&]
            {
                got = p.processLock.tryEnter();
                if (got)
                    p.processLock.exit();
            });
        other.join();
        otherThreadGotTheLock.push_back(got);
    };
    p.addListener(&listener);
    p.setParameter(2, 0.3f);
    p.setParameterNotifyingHost(1, 0.3f);
    EXPECT_EQ(otherThreadGotTheLock, (std::vector<bool>{false, false}));
    EXPECT_TRUE(p.processLock.tryEnter()) << "released afterwards";
    p.processLock.exit();
}

namespace
{
// What the VST3 and LV2 wrappers register to hear of changes that start in the plug-in.
struct WrapperListener : juce::AudioProcessorListener
{
    std::vector<std::pair<int, float>> changes;
    std::vector<std::pair<int, bool>> gestures;

    void audioProcessorParameterChanged(juce::AudioProcessor*, int index, float value) override
    {
        changes.emplace_back(index, value);
    }
    void audioProcessorChanged(juce::AudioProcessor*, const ChangeDetails&) override {}
    void audioProcessorParameterChangeGestureBegin(juce::AudioProcessor*, int index) override
    {
        gestures.emplace_back(index, true);
    }
    void audioProcessorParameterChangeGestureEnd(juce::AudioProcessor*, int index) override
    {
        gestures.emplace_back(index, false);
    }
};
} // namespace

TEST(ParameterTable, AChangeNotifyingTheHostReachesEngineListenersAndWrapper)
{
    ShellProbe p;
    RecordingListener listener;
    WrapperListener wrapper;
    p.addListener(&listener);
    p.addListener(&wrapper);

    p.beginParameterChangeGesture(1);
    p.setParameterNotifyingHost(1, 0.8f);
    p.endParameterChangeGesture(1);

    EXPECT_EQ(p.getEngine().parameter(Tindler::ClickSensitivity), 80.0f);
    EXPECT_EQ(listener.told, std::vector<int>{1});
    ASSERT_EQ(wrapper.changes.size(), 1u);
    EXPECT_EQ(wrapper.changes[0], std::make_pair(1, 0.8f));
    EXPECT_EQ(wrapper.gestures, (std::vector<std::pair<int, bool>>{{1, true}, {1, false}}));

    // A plain setParameter is the host's own change: the host is not told back.
    p.setParameter(2, 0.1f);
    EXPECT_EQ(wrapper.changes.size(), 1u);
    EXPECT_EQ(listener.told, (std::vector<int>{1, 2}));
    p.removeListener(&wrapper);
}

TEST(ParameterTable, WrappersSeeTheRowsThroughParameterObjects)
{
    ShellProbe p;
    const auto& objects = p.getParameters();
    ASSERT_EQ(objects.size(), 7);
    for (int index = 0; index < 7; ++index)
    {
        auto* object = objects.getUnchecked(index);
        EXPECT_EQ(object->getParameterIndex(), index);
        EXPECT_EQ(object->getName(1024), rows[index].name);
        auto* withId = dynamic_cast<juce::AudioProcessorParameterWithID*>(object);
        ASSERT_NE(withId, nullptr);
        EXPECT_EQ(withId->getParameterID(), rows[index].name);
        EXPECT_EQ(object->getLabel(), "");
        EXPECT_NEAR(object->getDefaultValue(), rows[index].hostDefault, 1e-7f);
        EXPECT_EQ(object->getCurrentValueAsText(), rows[index].text);
    }
    // VST 2 hosts cut names to 15 bytes.
    EXPECT_EQ(objects.getUnchecked(4)->getName(15), "CrackleSensitiv");

    // A VST3 host asks for the text of any value, not only the current one.
    EXPECT_EQ(objects.getUnchecked(2)->getText(0.5f, 128), "5.05 ms");
    EXPECT_EQ(objects.getUnchecked(0)->getText(0.4f, 128), "Off ");
    EXPECT_EQ(objects.getUnchecked(6)->getText(1.0f, 128), "On ");
    EXPECT_EQ(objects.getUnchecked(2)->getText(0.5f, 3), "5.0");
    EXPECT_NEAR(objects.getUnchecked(2)->getValueForText("5.05 ms"), 0.5f, 1e-6f);
    EXPECT_EQ(objects.getUnchecked(0)->getValueForText("Off "), 0.0f);
    EXPECT_EQ(objects.getUnchecked(0)->getValueForText("On"), 1.0f);

    // Automation arrives through setValue and lands in the engine.
    objects.getUnchecked(5)->setValue(0.25f);
    EXPECT_EQ(p.getEngine().parameter(Tindler::CrackleReduction), 25.0f);
    EXPECT_EQ(objects.getUnchecked(5)->getValue(), 0.25f);
}
