#include "editor/AboutDialog.h"

#include "shell/Identity.h"

#include "TindleEditorData.h"

namespace
{
std::unique_ptr<juce::Label> makeLabel(juce::Component& parent, const juce::String& name,
                                       const juce::String& text, const juce::Font& font, int justification)
{
    auto label = std::make_unique<juce::Label>(name, text);
    parent.addAndMakeVisible(*label);
    label->setFont(font);
    label->setJustificationType(juce::Justification(justification));
    label->setEditable(false, false, false);
    label->setColour(juce::TextEditor::textColourId, juce::Colour(0xFF000000));
    label->setColour(juce::TextEditor::backgroundColourId, juce::Colour(0x00000000));
    return label;
}
} // namespace

AboutDialog::AboutDialog()
{
    okButton = std::make_unique<juce::TextButton>("okButton");
    addAndMakeVisible(*okButton);
    okButton->setTooltip({});
    okButton->setButtonText("OK");
    okButton->addListener(this);
    okButton->setColour(juce::TextButton::buttonColourId, juce::Colour(0xFFFFDA73));
    okButton->setColour(juce::TextButton::buttonOnColourId, juce::Colour(0xFFFFDA73));

    versionLabel = makeLabel(*this, "versionLabel", "#VERSION", juce::Font(15.0f, juce::Font::plain), 33);
    copyrightLabel = makeLabel(*this, "copyrightLabel", juce::translate(tindle::identity::copyrightNotice),
                               juce::Font(14.0f, juce::Font::plain), 9);
    // The maker and the name share one component name.
    makerLabel =
        makeLabel(*this, "velmarLabel", "Velmar Digital", juce::Font("Segoe UI", 30.7f, juce::Font::bold), 9);
    nameLabel = makeLabel(*this, "velmarLabel", "#NAME", juce::Font("Segoe UI", 57.7f, juce::Font::plain), 9);

    setLookAndFeel(&lookAndFeel);
    setSize(400, 240);
    banner = juce::Drawable::createFromImageData(TindleEditorData::aboutbanner_svg,
                                                 TindleEditorData::aboutbanner_svgSize);
    nameLabel->setText(juce::String(tindle::identity::pluginName).replace("Velmar Digital ", ""),
                       juce::dontSendNotification);
    versionLabel->setText(juce::translate("Version") + " " + tindle::identity::versionString,
                          juce::dontSendNotification);
}

AboutDialog::~AboutDialog()
{
    okButton->removeListener(this);
    setLookAndFeel(nullptr);
    okButton.reset();
    versionLabel.reset();
    copyrightLabel.reset();
    makerLabel.reset();
    nameLabel.reset();
    banner.reset();
}

void AboutDialog::paint(juce::Graphics& g)
{
    g.fillAll(juce::Colour(0xFFFFFFFF));
    g.setColour(juce::Colours::black);
    if (banner != nullptr)
        banner->drawWithin(g, juce::Rectangle<float>(48.0f, 20.0f, 352.0f, 100.0f),
                           juce::RectanglePlacement(juce::RectanglePlacement::stretchToFit), 1.0f);
}

void AboutDialog::resized()
{
    okButton->setBounds(288, 200, 94, 24);
    versionLabel->setBounds(16, 104, 344, 24);
    copyrightLabel->setBounds(16, 192, 256, 40);
    makerLabel->setBounds(16, 32, 360, 32);
    nameLabel->setBounds(13, 48, 360, 64);
}

void AboutDialog::buttonClicked(juce::Button* button)
{
    // Hiding the dialog window ends it.
    if (button == okButton.get())
        if (auto* window = getParentComponent())
            window->setVisible(false);
}
