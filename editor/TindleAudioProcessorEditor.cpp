#include "editor/TindleAudioProcessorEditor.h"

#include "shell/Identity.h"
#include "shell/TindleAudioProcessor.h"

#include "TindleEditorData.h"

namespace
{
using velmar::audio::Tindler;

std::unique_ptr<juce::GroupComponent> makeGroup(juce::Component& parent, const juce::String& name,
                                                const juce::String& text)
{
    auto group = std::make_unique<juce::GroupComponent>(name, juce::translate(text));
    parent.addAndMakeVisible(*group);
    group->setColour(juce::GroupComponent::outlineColourId, juce::Colour(0x66FFFFFF));
    return group;
}

std::unique_ptr<ParameterSlider> makeSlider(juce::Component& parent, juce::Slider::Listener* listener,
                                            const juce::String& name, const juce::String& tooltip,
                                            double maximum)
{
    auto slider = std::make_unique<ParameterSlider>(name);
    parent.addAndMakeVisible(*slider);
    slider->setTooltip(juce::translate(tooltip));
    // A placeholder range: the first refresh binds the slider to its parameter.
    slider->setRange(0.0, maximum, 1.0);
    slider->setSliderStyle(juce::Slider::LinearHorizontal);
    slider->setTextBoxStyle(juce::Slider::TextBoxRight, false, 60, 20);
    slider->setColour(juce::Slider::thumbColourId, juce::Colour(0xFFD2691E));
    slider->setColour(juce::Slider::rotarySliderFillColourId, juce::Colour(0xFFD2691E));
    slider->setColour(juce::Slider::rotarySliderOutlineColourId, juce::Colour(0x40000000));
    slider->addListener(listener);
    return slider;
}

std::unique_ptr<juce::Label> makeLabel(juce::Component& parent, const juce::String& name,
                                       const juce::String& text)
{
    auto label = std::make_unique<juce::Label>(name, juce::translate(text));
    parent.addAndMakeVisible(*label);
    label->setFont(juce::Font(15.0f, juce::Font::plain));
    label->setJustificationType(juce::Justification(33));
    label->setEditable(false, false, false);
    label->setColour(juce::TextEditor::textColourId, juce::Colour(0xFF000000));
    label->setColour(juce::TextEditor::backgroundColourId, juce::Colour(0x00000000));
    return label;
}

std::unique_ptr<juce::ToggleButton> makeToggle(juce::Component& parent, juce::Button::Listener* listener,
                                               const juce::String& name, const juce::String& text,
                                               const juce::String& tooltip)
{
    auto toggle = std::make_unique<juce::ToggleButton>(name);
    parent.addAndMakeVisible(*toggle);
    toggle->setButtonText(juce::translate(text));
    if (tooltip.isNotEmpty())
        toggle->setTooltip(juce::translate(tooltip));
    toggle->addListener(listener);
    return toggle;
}

std::unique_ptr<Axis> makeAxis(juce::Component& parent)
{
    auto axis = std::make_unique<Axis>();
    parent.addAndMakeVisible(*axis);
    return axis;
}
} // namespace

TindleAudioProcessorEditor::TindleAudioProcessorEditor(BasePlugInProcessor& owner)
    : BasePluginEditor(owner)
{
    tindlerGroup = makeGroup(*this, "tindlerGroup", "Tindler settings");
    clickSensitivitySlider = makeSlider(*this, this, "clickSensitivitySlider",
                                        "The sensitivity in percent of the click detection.", 200.0);
    clicksAxis = makeAxis(*this);
    clicksTimeAxis = makeAxis(*this);
    header = std::make_unique<PlugInEditorHeader>();
    addAndMakeVisible(*header);
    clickSensitivityLabel = makeLabel(*this, "clickSensitivityLabel", "Click sensitivity (%)");
    clickLengthSlider =
        makeSlider(*this, this, "clickLengthSlider", "The maximum length of the removed clicks.", 200.0);
    clickLengthLabel = makeLabel(*this, "clickLengthLabel", "Click length (ms)");
    decracklerGroup = makeGroup(*this, "decracklerGroup", "Decrackler settings");
    decracklerGroup->setTextLabelPosition(juce::Justification(33));
    crackleAxis = makeAxis(*this);
    crackleTimeAxis = makeAxis(*this);
    crackleSensitivitySlider = makeSlider(*this, this, "crackleSensitivitySlider",
                                          "The sensitivity of the crackle reduction.", 200.0);
    crackleSensitivityLabel = makeLabel(*this, "crackeSensitivityLabel", "Crackle sensitivity (%)\n");
    residualToggle = makeToggle(*this, this, "residualToggle", "Listen to removed signal", {});
    tindleCurveEditor = std::make_unique<CurveEditor>();
    tindleCurveEditor->setName("tindleCurveEditor");
    addAndMakeVisible(*tindleCurveEditor);
    decrackleCurveEditor = std::make_unique<CurveEditor>();
    decrackleCurveEditor->setName("decrackleCurveEditor");
    addAndMakeVisible(*decrackleCurveEditor);
    tindlerToggle = makeToggle(*this, this, "tindlerToggle", "Enable tindler",
                               "Enable or disable the tindle processesing");
    decracklerToggle = makeToggle(*this, this, "decracklerToggle", "Enable decrackler",
                                  "Enable or disable the decrackle processesing");
    // The reduction slider carries the sensitivity slider's name as well; that name stays.
    crackleReductionSlider = makeSlider(*this, this, "crackleSensitivitySlider",
                                        "The amount of crackle reduction in percent.", 100.0);
    crackleReductionLabel = makeLabel(*this, "crackleReductionLabel", "Crackle reduction (%)");
    digitalToggle =
        makeToggle(*this, this, "digitalToggle", "Detect digital drop-outs",
                   "Enables or disables the detection of digital drop-outs. This should be disabled if "
                   "the recording does not contain clicks caused by drop-outs.");

    background = juce::ImageCache::getFromMemory(TindleEditorData::background_jpg,
                                                 TindleEditorData::background_jpgSize);
    setSize(600, 520);
    engine = dynamic_cast<Tindler*>(&owner.getEngine());
    maxClicksPerSecond = 500;

    clicksAxis->setRange(0, maxClicksPerSecond);
    clicksAxis->setTitle(juce::translate("Clicks per second"));
    clicksAxis->setScale(Axis::linear, false, false);
    clicksTimeAxis->setRange(-10, 0);
    clicksTimeAxis->setTitle(juce::translate("Time (seconds)"));
    clicksTimeAxis->setScale(Axis::linear, true, false);
    tindleCurveEditor->setXAxis(clicksTimeAxis.get());
    tindleCurveEditor->setYAxis(clicksAxis.get());
    crackleAxis->setRange(0, 100);
    crackleAxis->setTitle(juce::translate("Crackle level (%)"));
    crackleAxis->setScale(Axis::linear, false, false);
    crackleTimeAxis->setRange(-10, 0);
    crackleTimeAxis->setTitle(juce::translate("Time (seconds)"));
    crackleTimeAxis->setScale(Axis::linear, true, false);
    decrackleCurveEditor->setXAxis(crackleTimeAxis.get());
    decrackleCurveEditor->setYAxis(crackleAxis.get());

    crackleHistory.insertMultiple(0, 0.0f, historyLength);
    clicksHistory.insertMultiple(0, 0.0f, historyLength);
    clicksCurveId = 0;
    crackleCurveId = 1;

    refreshControls();
    processor->addListener(this);
    header->setProductNames(tindle::identity::resourcePrefix, tindle::identity::helpStem);
    startTimer(timerMilliseconds);
}

TindleAudioProcessorEditor::~TindleAudioProcessorEditor()
{
    processor->removeListener(this);
    stopTimer();
    cancelPendingUpdate();
    tindlerGroup.reset();
    clickSensitivitySlider.reset();
    clicksAxis.reset();
    clicksTimeAxis.reset();
    header.reset();
    clickSensitivityLabel.reset();
    clickLengthSlider.reset();
    clickLengthLabel.reset();
    decracklerGroup.reset();
    crackleAxis.reset();
    crackleTimeAxis.reset();
    crackleSensitivitySlider.reset();
    crackleSensitivityLabel.reset();
    residualToggle.reset();
    tindleCurveEditor.reset();
    decrackleCurveEditor.reset();
    tindlerToggle.reset();
    decracklerToggle.reset();
    crackleReductionSlider.reset();
    crackleReductionLabel.reset();
    digitalToggle.reset();
}

void TindleAudioProcessorEditor::paint(juce::Graphics& g)
{
    g.fillAll(juce::Colour(0xFFFFFFFF));
    g.setTiledImageFill(background, 0, 0, 1.0f);
    g.fillRect(0, 0, getWidth(), getHeight());
}

void TindleAudioProcessorEditor::resized()
{
    const int w = getWidth();
    tindlerGroup->setBounds(16, 56, w - 32, 216);
    clickSensitivitySlider->setBounds(40, 176, 224, 24);
    clicksAxis->setBounds(272, 80, 48, 144);
    clicksTimeAxis->setBounds(304, 208, w - 328, 40);
    header->setBounds(0, 0, w, 64);
    clickSensitivityLabel->setBounds(32, 152, 240, 24);
    clickLengthSlider->setBounds(40, 224, 224, 24);
    clickLengthLabel->setBounds(32, 200, 239, 24);
    decracklerGroup->setBounds(18, 288, w - 32, 192);
    crackleAxis->setBounds(280, 312, 46, 144);
    crackleTimeAxis->setBounds(304, 440, w - 326, 40);
    crackleSensitivitySlider->setBounds(40, 376, 224, 24);
    crackleSensitivityLabel->setBounds(32, 360, 245, 24);
    residualToggle->setBounds(16, 488, 560, 24);
    tindleCurveEditor->setBounds(320, 96, w - 360, 112);
    decrackleCurveEditor->setBounds(320, 328, w - 360, 112);
    tindlerToggle->setBounds(32, 96, 240, 24);
    decracklerToggle->setBounds(32, 328, 240, 24);
    crackleReductionSlider->setBounds(39, 428, 224, 24);
    crackleReductionLabel->setBounds(32, 408, 245, 24);
    digitalToggle->setBounds(32, 120, 240, 24);
}

void TindleAudioProcessorEditor::parameterChanged(int)
{
    if (juce::MessageManager::existsAndIsCurrentThread())
        refreshControls();
    else
        triggerAsyncUpdate();
}

void TindleAudioProcessorEditor::handleAsyncUpdate()
{
    refreshControls();
}

void TindleAudioProcessorEditor::refreshControls()
{
    auto& base = processor->getEngine();
    clickSensitivitySlider->bindToParameter(processor, &base, Tindler::ClickSensitivity);
    clickLengthSlider->bindToParameter(processor, &base, Tindler::ClickLength);
    crackleSensitivitySlider->bindToParameter(processor, &base, Tindler::CrackleSensitivity);
    crackleReductionSlider->bindToParameter(processor, &base, Tindler::CrackleReduction);
    tindlerToggle->setToggleState(base.parameter(Tindler::EnableTindle) > 0.5f, juce::dontSendNotification);
    decracklerToggle->setToggleState(base.parameter(Tindler::EnableDecrackle) > 0.5f,
                                     juce::dontSendNotification);
    digitalToggle->setToggleState(base.parameter(Tindler::DetectDropouts) > 0.5f, juce::dontSendNotification);
    residualToggle->setToggleState(base.parameter(Tindler::ResidualMode) > 0.5f, juce::dontSendNotification);
}

void TindleAudioProcessorEditor::timerCallback()
{
    const auto sr = static_cast<float>(processor->getSampleRate());
    float clicksPerSecond = 0.0f;
    float cracklesPerSecond = 0.0f;
    // Read before the rate test, so that the counts are cleared even when nothing is shown.
    const bool fresh = engine != nullptr && engine->readStatistics(clicksPerSecond, cracklesPerSecond);
    if (!(sr > 0.0f))
        return;

    // A tick without a new frame repeats the newest value.
    clicksHistory.remove(0);
    clicksHistory.add(fresh ? clicksPerSecond / static_cast<float>(maxClicksPerSecond)
                            : (clicksHistory.isEmpty() ? 0.0f : clicksHistory.getLast()));
    crackleHistory.remove(0);
    crackleHistory.add(fresh ? cracklesPerSecond / sr
                             : (crackleHistory.isEmpty() ? 0.0f : crackleHistory.getLast()));

    tindleCurveEditor->setCurve(clicksCurveId,
                                Curve(clicksHistory, Curve::filled, juce::Colour(0xFFF4A460), 1.5f));
    decrackleCurveEditor->setCurve(crackleCurveId,
                                   Curve(crackleHistory, Curve::filled, juce::Colour(0xFFF4A460), 1.5f));
    tindleCurveEditor->repaint();
    decrackleCurveEditor->repaint();
}

void TindleAudioProcessorEditor::buttonClicked(juce::Button* button)
{
    // Toggles write the engine directly: no host parameter, no gesture, no lock.
    auto& base = processor->getEngine();
    const float value = button->getToggleState() ? 1.0f : 0.0f;
    if (button == residualToggle.get())
        base.setParameter(Tindler::ResidualMode, value);
    else if (button == tindlerToggle.get())
        base.setParameter(Tindler::EnableTindle, value);
    else if (button == decracklerToggle.get())
        base.setParameter(Tindler::EnableDecrackle, value);
    else if (button == digitalToggle.get())
        base.setParameter(Tindler::DetectDropouts, value);
}

// The processor makes its window here, where the editor's classes are known.
juce::AudioProcessorEditor* TindleAudioProcessor::createEditor()
{
    return new TindleAudioProcessorEditor(*this);
}
