#pragma once

#include "editor/Axis.h"
#include "editor/BasePluginEditor.h"
#include "editor/CurveEditor.h"
#include "editor/ParameterSlider.h"
#include "editor/PlugInEditorHeader.h"
#include "engine/Tindler.h"

#include <memory>

/** The plug-in's window, 600 by 520: the header, click removal above and crackle reduction below,
    four sliders bound to host parameters, four toggles that write the engine directly, and two
    graphs of the last ten seconds of what the engine found, scrolled by a 100 ms timer.
    Allocates its children when made and a curve per graph on every tick. */
class TindleAudioProcessorEditor : public BasePluginEditor,
                                   public juce::Timer,
                                   public BasePlugInProcessor::Listener,
                                   public juce::Slider::Listener,
                                   public juce::Button::Listener,
                                   private juce::AsyncUpdater
{
public:
    static constexpr int historyLength = 100; // ten seconds at one value per tick
    static constexpr int timerMilliseconds = 100;

    explicit TindleAudioProcessorEditor(BasePlugInProcessor& owner);
    ~TindleAudioProcessorEditor() override;

    void paint(juce::Graphics& g) override;
    void resized() override;
    /** All controls follow the engine; from another thread than the message thread the refresh is
        handed over to it, since components belong to that thread. */
    void parameterChanged(int index) override;
    void timerCallback() override;
    void sliderValueChanged(juce::Slider*) override {}
    void sliderDragStarted(juce::Slider*) override {}
    void sliderDragEnded(juce::Slider*) override {}
    void buttonClicked(juce::Button* button) override;

    /** Pulls all eight controls from the engine, sending nothing. */
    void refreshControls();

    const juce::Array<float>& getClicksHistory() const noexcept { return clicksHistory; }
    const juce::Array<float>& getCrackleHistory() const noexcept { return crackleHistory; }
    CurveEditor& getClicksGraph() const noexcept { return *tindleCurveEditor; }
    CurveEditor& getCrackleGraph() const noexcept { return *decrackleCurveEditor; }
    PlugInEditorHeader& getHeader() const noexcept { return *header; }

private:
    void handleAsyncUpdate() override;

    velmar::audio::Tindler* engine = nullptr;
    int clicksCurveId = 0;
    int crackleCurveId = 1;
    juce::Array<float> crackleHistory;
    juce::Array<float> clicksHistory;
    int maxClicksPerSecond = 500;

    // The children, in order of creation, which is also the z-order.
    std::unique_ptr<juce::GroupComponent> tindlerGroup;
    std::unique_ptr<ParameterSlider> clickSensitivitySlider;
    std::unique_ptr<Axis> clicksAxis;
    std::unique_ptr<Axis> clicksTimeAxis;
    std::unique_ptr<PlugInEditorHeader> header;
    std::unique_ptr<juce::Label> clickSensitivityLabel;
    std::unique_ptr<ParameterSlider> clickLengthSlider;
    std::unique_ptr<juce::Label> clickLengthLabel;
    std::unique_ptr<juce::GroupComponent> decracklerGroup;
    std::unique_ptr<Axis> crackleAxis;
    std::unique_ptr<Axis> crackleTimeAxis;
    std::unique_ptr<ParameterSlider> crackleSensitivitySlider;
    std::unique_ptr<juce::Label> crackleSensitivityLabel;
    std::unique_ptr<juce::ToggleButton> residualToggle;
    std::unique_ptr<CurveEditor> tindleCurveEditor;
    std::unique_ptr<CurveEditor> decrackleCurveEditor;
    std::unique_ptr<juce::ToggleButton> tindlerToggle;
    std::unique_ptr<juce::ToggleButton> decracklerToggle;
    std::unique_ptr<ParameterSlider> crackleReductionSlider;
    std::unique_ptr<juce::Label> crackleReductionLabel;
    std::unique_ptr<juce::ToggleButton> digitalToggle;

    juce::Image background;
};
