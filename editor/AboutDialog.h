#pragma once

#include "editor/VelmarLookAndFeel.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <memory>

/** The About box's content: a white panel with a wave banner, the maker's name, the plug-in's
    short name, its version and rights line, and an OK button that closes the window. Allocates its
    children and banner. */
class AboutDialog : public juce::Component, public juce::Button::Listener
{
public:
    AboutDialog();
    ~AboutDialog() override;

    void paint(juce::Graphics& g) override;
    void resized() override;
    void buttonClicked(juce::Button* button) override;

private:
    std::unique_ptr<juce::Drawable> banner;
    VelmarLookAndFeel lookAndFeel;
    std::unique_ptr<juce::TextButton> okButton;
    std::unique_ptr<juce::Label> versionLabel;
    std::unique_ptr<juce::Label> copyrightLabel;
    std::unique_ptr<juce::Label> makerLabel;
    std::unique_ptr<juce::Label> nameLabel;
};
