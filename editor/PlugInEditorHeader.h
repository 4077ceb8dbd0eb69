#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

#include <memory>

/** An extra entry for the header's menu. */
struct HeaderMenuItem
{
    juce::String text;
    bool enabled = true;
    bool ticked = false;
};

/** The bar at the top of the window: the maker's logo, the plug-in's title, a band of waves, and a
    round button whose menu opens the help page and the About box. Allocates its pictures and the
    menu when it opens. */
class PlugInEditorHeader : public juce::Component, public juce::Button::Listener
{
public:
    class Listener
    {
    public:
        virtual ~Listener() = default;
        virtual void menuItemSelected(int result) = 0;
    };

    enum MenuIds
    {
        aboutId = 0x2001,
        helpId = 0x2002,
    };

    PlugInEditorHeader();
    ~PlugInEditorHeader() override;

    /** The help page is <bundle>/Contents/Resources/<folderPrefix>_<language>/<fileStem>.html. */
    void setProductNames(const juce::String& helpFolderPrefix, const juce::String& helpFileStem);

    void paint(juce::Graphics& g) override;
    void resized() override;
    void buttonClicked(juce::Button* button) override;

    /** A result of the menu other than help and About, including 0 for none; last listener first. */
    virtual void menuItemSelected(int result);
    void addListener(Listener* listener);
    void removeListener(Listener* listener);

    /** The menu as it opens, for inspection. */
    juce::PopupMenu buildMenu() const;
    /** Acts on a result of the menu. */
    void handleMenuResult(int result);

    void showHelp();
    void showAbout();
    juce::File getHelpFilePath(const juce::String& language) const;

    juce::ImageButton& getMenuButton() const noexcept { return *menuButton; }
    const juce::Drawable* getWaves() const noexcept { return waves.get(); }

private:
    juce::Array<Listener*> listeners;
    std::unique_ptr<juce::Drawable> waves;
    juce::String folderPrefix;
    juce::String fileStem;
    juce::HashMap<int, HeaderMenuItem> menuItems{101};
    std::unique_ptr<juce::ImageButton> menuButton;
    juce::Image logo;
    juce::Path ruler;

    JUCE_DECLARE_WEAK_REFERENCEABLE(PlugInEditorHeader)
};
