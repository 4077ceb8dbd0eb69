// The plug-in's window without a screen: its children, bindings, timer, graphs and header.

#include "editor/AboutDialog.h"
#include "editor/Axis.h"
#include "editor/TindleAudioProcessorEditor.h"
#include "shell/TindleAudioProcessor.h"
#include "support/Render.h"

#include <gtest/gtest.h>

#include <memory>

using velmar::audio::Tindler;

namespace
{
/** Counts what a host would be told: parameter changes and gestures. */
struct HostSide : juce::AudioProcessorListener
{
    int changes = 0;
    int gestures = 0;
    void audioProcessorParameterChanged(juce::AudioProcessor*, int, float) override { ++changes; }
    void audioProcessorChanged(juce::AudioProcessor*, const ChangeDetails&) override {}
    void audioProcessorParameterChangeGestureBegin(juce::AudioProcessor*, int) override { ++gestures; }
    void audioProcessorParameterChangeGestureEnd(juce::AudioProcessor*, int) override { ++gestures; }
};

struct Window
{
    Window()
        : processor(static_cast<BasePlugInProcessor*>(createPluginFilter()))
        , editor(static_cast<TindleAudioProcessorEditor*>(processor->createEditor()))
    {
        editor->stopTimer(); // the tests tick it by hand
        processor->addListener(&host);
    }
    ~Window()
    {
        processor->removeListener(&host);
        processor->editorBeingDeleted(editor.get());
        editor.reset();
    }
    template <typename T>
    T& child(int index) const
    {
        return dynamic_cast<T&>(*editor->getChildComponent(index));
    }
    Tindler& engine() const { return dynamic_cast<Tindler&>(processor->getEngine()); }

    std::unique_ptr<BasePlugInProcessor> processor;
    std::unique_ptr<TindleAudioProcessorEditor> editor;
    HostSide host;
};
} // namespace

TEST(Editor, ChildrenInOrderWithTheirNamesBoundsAndBindings)
{
    Window w;
    ASSERT_EQ(w.editor->getWidth(), 600);
    ASSERT_EQ(w.editor->getHeight(), 520);
    struct Expected
    {
        const char* name;
        juce::Rectangle<int> bounds;
        int parameter; // engine id for sliders and toggles, -1 otherwise
    };
    const Expected table[] = {
        {"tindlerGroup", {16, 56, 568, 216}, -1},
        {"clickSensitivitySlider", {40, 176, 224, 24}, Tindler::ClickSensitivity},
        {"", {272, 80, 48, 144}, -1},
        {"", {304, 208, 272, 40}, -1},
        {"", {0, 0, 600, 64}, -1},
        {"clickSensitivityLabel", {32, 152, 240, 24}, -1},
        {"clickLengthSlider", {40, 224, 224, 24}, Tindler::ClickLength},
        {"clickLengthLabel", {32, 200, 239, 24}, -1},
        {"decracklerGroup", {18, 288, 568, 192}, -1},
        {"", {280, 312, 46, 144}, -1},
        {"", {304, 440, 274, 40}, -1},
        {"crackleSensitivitySlider", {40, 376, 224, 24}, Tindler::CrackleSensitivity},
        {"crackeSensitivityLabel", {32, 360, 245, 24}, -1},
        {"residualToggle", {16, 488, 560, 24}, Tindler::ResidualMode},
        {"tindleCurveEditor", {320, 96, 240, 112}, -1},
        {"decrackleCurveEditor", {320, 328, 240, 112}, -1},
        {"tindlerToggle", {32, 96, 240, 24}, Tindler::EnableTindle},
        {"decracklerToggle", {32, 328, 240, 24}, Tindler::EnableDecrackle},
        {"crackleSensitivitySlider", {39, 428, 224, 24}, Tindler::CrackleReduction},
        {"crackleReductionLabel", {32, 408, 245, 24}, -1},
        {"digitalToggle", {32, 120, 240, 24}, Tindler::DetectDropouts},
    };
    ASSERT_EQ(w.editor->getNumChildComponents(), 21);
    for (int i = 0; i < 21; ++i)
    {
        const auto* c = w.editor->getChildComponent(i);
        EXPECT_EQ(c->getName(), table[i].name) << i;
        EXPECT_EQ(c->getBounds(), table[i].bounds) << i;
        if (const auto* slider = dynamic_cast<const ParameterSlider*>(c))
        {
            EXPECT_EQ(slider->getParameterId(), table[i].parameter) << i;
            EXPECT_EQ(slider->getHostIndex(), w.processor->getParameterIndex(table[i].parameter)) << i;
            // The slider snaps to its float step of 0.1, so it holds the engine's value to a part in 1e7.
            EXPECT_NEAR(slider->getValue(), w.engine().parameter(table[i].parameter), 1e-5) << i;
            EXPECT_EQ(slider->getInterval(), static_cast<double>(0.1f));
        }
        if (auto* toggle = dynamic_cast<juce::ToggleButton*>(w.editor->getChildComponent(i)))
        {
            // The toggle writes its own setting and no other.
            const float before = w.engine().parameter(table[i].parameter);
            toggle->setToggleState(before < 0.5f, juce::sendNotificationSync);
            EXPECT_EQ(w.engine().parameter(table[i].parameter), before < 0.5f ? 1.0f : 0.0f) << table[i].name;
            toggle->setToggleState(before > 0.5f, juce::sendNotificationSync);
            EXPECT_EQ(w.engine().parameter(table[i].parameter), before) << table[i].name;
        }
    }
    EXPECT_EQ(w.child<juce::Label>(12).getText(), "Crackle sensitivity (%)\n");
    EXPECT_EQ(w.child<juce::ToggleButton>(20).getTooltip().substring(0, 21), "Enables or disables t");
    EXPECT_EQ(w.child<juce::ToggleButton>(16).getTooltip(), "Enable or disable the tindle processesing");
    // Toggles reach the engine only: hosts are told nothing and see no value change.
    EXPECT_EQ(w.host.changes, 0);
}

TEST(Editor, HostChangesRefreshEveryControlWithoutAnEcho)
{
    Window w;
    w.processor->setParameter(w.processor->getParameterIndex(Tindler::ClickLength), 0.5f);
    w.processor->setParameter(w.processor->getParameterIndex(Tindler::EnableDecrackle), 0.0f);
    // 5.05 ms, shown on the slider's step of 0.1.
    EXPECT_FLOAT_EQ(w.engine().parameter(Tindler::ClickLength), 5.05f);
    EXPECT_NEAR(w.child<ParameterSlider>(6).getValue(), 5.05, 0.05 + 1e-6);
    EXPECT_FALSE(w.child<juce::ToggleButton>(17).getToggleState());
    EXPECT_EQ(w.host.changes, 0);

    // A program puts all eight back and tells the editor with -1.
    w.engine().setParameter(Tindler::DetectDropouts, 1.0f);
    w.processor->refreshParameterList();
    w.processor->setCurrentProgram(0);
    EXPECT_NEAR(w.child<ParameterSlider>(6).getValue(), 2.0, 1e-5);
    EXPECT_TRUE(w.child<juce::ToggleButton>(17).getToggleState());
    EXPECT_FALSE(w.child<juce::ToggleButton>(20).getToggleState());
    EXPECT_EQ(w.host.changes, 0);

    // A slider moved by the user goes to the engine through the host, with its gesture.
    auto& slider = w.child<ParameterSlider>(1);
    slider.startedDragging();
    slider.setValue(75.0, juce::sendNotificationSync);
    slider.stoppedDragging();
    EXPECT_FLOAT_EQ(w.engine().parameter(Tindler::ClickSensitivity), 75.0f);
    EXPECT_EQ(w.host.changes, 1);
    EXPECT_EQ(w.host.gestures, 2);
    EXPECT_EQ(slider.getDoubleClickReturnValue(), 30.0);
}

TEST(Editor, TimerKeepsTenSecondsAndRepeatsTheLastValue)
{
    Window w;
    // No sample rate yet: nothing scrolls.
    w.editor->timerCallback();
    EXPECT_EQ(w.editor->getClicksHistory().size(), 100);
    EXPECT_EQ(w.editor->getClicksGraph().getNumCurves(), 0);

    ASSERT_TRUE(tindle::test::prepare(*w.processor, 1, 44100.0, 512));
    // Bursts of eight loud samples every 300 in near-silence: clicks for the engine.
    tindle::test::Channels input(1, std::vector<float>(44100, 0.0f));
    for (std::size_t i = 0; i < input[0].size(); ++i)
        input[0][i] = (i % 7 == 0 ? 1e-3f : -1e-3f) + (i % 300 < 8 ? 0.8f : 0.0f);
    tindle::test::renderBlocks(*w.processor, input, {512});
    w.editor->timerCallback();
    const float newest = w.editor->getClicksHistory().getLast();
    EXPECT_GT(newest, 0.1f);
    EXPECT_EQ(w.editor->getClicksHistory().size(), 100);
    EXPECT_EQ(w.editor->getCrackleHistory().size(), 100);

    // No frame since: the newest value repeats, and the window stays ten seconds long.
    for (int tick = 0; tick < 150; ++tick)
        w.editor->timerCallback();
    EXPECT_EQ(w.editor->getClicksHistory().size(), 100);
    EXPECT_EQ(w.editor->getClicksHistory().getFirst(), newest);
    EXPECT_EQ(w.editor->getClicksGraph().getNumCurves(), 1);
    EXPECT_EQ(w.editor->getClicksGraph().getCurve(0).points.size(), 100);
}

TEST(Axis, StepsAndLabelsOfTheFourAxes)
{
    Window w;
    const auto texts = [](Axis& axis)
    {
        juce::StringArray t;
        for (const auto* label : axis.getLabels())
            t.add(label->text);
        return t.joinIntoString(",");
    };
    auto& clicks = w.child<Axis>(2);
    auto& clicksTime = w.child<Axis>(3);
    auto& crackle = w.child<Axis>(9);
    auto& crackleTime = w.child<Axis>(10);
    ASSERT_TRUE(clicks.computeLabels());
    EXPECT_EQ(texts(clicks), "0,50,100,150,200,250,300,350,400,450,500");
    ASSERT_TRUE(crackle.computeLabels());
    EXPECT_EQ(texts(crackle), "0,10,20,30,40,50,60,70,80,90,100");
    for (Axis* time : {&clicksTime, &crackleTime})
    {
        ASSERT_TRUE(time->computeLabels());
        EXPECT_EQ(texts(*time), "-10,-8,-6,-4,-2,0");
    }
    EXPECT_EQ(clicks.getGridPositions().size(), 11);
    EXPECT_FLOAT_EQ(clicksTime.getGridPositions()[1], 0.2f);

    // A decibel axis never steps by 2: where a linear one would, it takes 5.
    Axis decibels;
    decibels.setSize(48, 60);
    decibels.setRange(0, 100);
    decibels.setScale(Axis::linear, false, false);
    ASSERT_TRUE(decibels.computeLabels());
    EXPECT_EQ(decibels.getLabels()[1]->text, "20");
    decibels.setScale(Axis::decibel, false, false);
    ASSERT_TRUE(decibels.computeLabels());
    EXPECT_EQ(decibels.getLabels()[0]->text, juce::String::fromUTF8("-\xe2\x88\x9e"));
    EXPECT_EQ(decibels.getLabels()[1]->text, "-6.0"); // 50 of 100
    // Reversed ranges and axes of no size show nothing, and keep the labels they had.
    decibels.setRange(100, 0);
    EXPECT_FALSE(decibels.computeLabels());
    decibels.setRange(0, 100);
    decibels.setSize(48, 0);
    EXPECT_FALSE(decibels.computeLabels());
    EXPECT_EQ(decibels.getGridPositions().size(), 3);
}

TEST(Graph, CurvesAndThePixelMapping)
{
    juce::Array<float> values;
    for (int i = 0; i < 5; ++i)
        values.add(0.25f * static_cast<float>(i));
    const Curve curve(values, Curve::filled, juce::Colours::red, 1.5f);
    ASSERT_EQ(curve.points.size(), 5);
    EXPECT_EQ(curve.points[0], juce::Point<float>(0.0f, 0.0f));
    EXPECT_EQ(curve.points[3], juce::Point<float>(0.75f, 0.75f));

    CurveEditor plot;
    plot.setSize(240, 112);
    EXPECT_EQ(plot.toPixelX(0.0f), 1.0f);
    EXPECT_EQ(plot.toPixelX(1.0f), 239.0f);
    EXPECT_EQ(plot.toPixelY(0.0f), 111.0f); // a curve of zeros fills one pixel at the bottom
    EXPECT_EQ(plot.toPixelY(1.2f), 1.0f);   // above the top is held at the edge
    EXPECT_EQ(plot.toPixelY(0.5f), 56.5f);

    plot.setCurve(0, curve);
    plot.setCurve(0, Curve(values, Curve::stroked, juce::Colours::blue, 2.0f));
    EXPECT_EQ(plot.getNumCurves(), 1);
    EXPECT_EQ(plot.getCurve(0).type, Curve::stroked);

    // Points are hit within their size around their pixel position.
    plot.setPoint(7, {0.5f, 0.5f, 10.0f, 1, juce::Colours::black, 0});
    // Its pixel is 120.5, 56.5: x from int(115.5) = 115 for 10 pixels, y from 51.
    EXPECT_EQ(plot.hitTest({115, 51}), 7);
    EXPECT_EQ(plot.hitTest({124, 60}), 7);
    EXPECT_EQ(plot.hitTest({114, 56}), -1);
    EXPECT_EQ(plot.hitTest({125, 56}), -1);
    EXPECT_EQ(plot.hitTest({120, 61}), -1);
}

TEST(Header, MenuHelpPathAndAbout)
{
    Window w;
    auto& header = w.editor->getHeader();
    EXPECT_EQ(header.getMenuButton().getBounds(), juce::Rectangle<int>(564, 8, 24, 24));
    EXPECT_NE(header.getWaves(), nullptr);

    const juce::PopupMenu menu = header.buildMenu();
    juce::StringArray entries;
    for (juce::PopupMenu::MenuItemIterator it(menu); it.next();)
        entries.add(it.getItem().isSeparator ? "-"
                                             : it.getItem().text + "#" + juce::String(it.getItem().itemID));
    EXPECT_EQ(entries.joinIntoString("|"), "Help...#8194|-|About Velmar Digital Tindle...#8193");

    // Dismissing the menu tells the listeners 0.
    struct Recorder : PlugInEditorHeader::Listener
    {
        juce::Array<int> results;
        void menuItemSelected(int result) override { results.add(result); }
    } recorder;
    header.addListener(&recorder);
    header.handleMenuResult(0);
    header.removeListener(&recorder);
    EXPECT_EQ(recorder.results, juce::Array<int>({0}));

    // No folder for a language, or none at all: the English page.
    EXPECT_TRUE(
        header.getHelpFilePath("Klingon-Qo'noS").getFullPathName().endsWith("Ostrand_en/Tindle.html"));
    EXPECT_TRUE(header.getHelpFilePath("").getFullPathName().endsWith("Ostrand_en/Tindle.html"));

    AboutDialog about;
    EXPECT_EQ(about.getBounds(), juce::Rectangle<int>(0, 0, 400, 240));
    ASSERT_EQ(about.getNumChildComponents(), 5);
    EXPECT_EQ(dynamic_cast<juce::Label&>(*about.getChildComponent(4)).getText(), "Tindle");
    EXPECT_EQ(dynamic_cast<juce::Label&>(*about.getChildComponent(1)).getText(), "Version 1.1.1");
    EXPECT_EQ(about.getChildComponent(0)->getBounds(), juce::Rectangle<int>(288, 200, 94, 24));
}
