#include "editor/PlugInEditorHeader.h"

#include "editor/AboutDialog.h"
#include "shell/BundleResources.h"
#include "shell/Identity.h"

#include "TindleEditorData.h"

PlugInEditorHeader::PlugInEditorHeader()
{
    menuButton = std::make_unique<juce::ImageButton>("menuButton");
    addAndMakeVisible(*menuButton);
    menuButton->setTooltip(juce::translate("Show drop-down menu for this plug-in"));
    menuButton->setButtonText({});
    menuButton->addListener(this);
    const juce::Image face = juce::ImageCache::getFromMemory(TindleEditorData::menubutton_png,
                                                             TindleEditorData::menubutton_pngSize);
    const juce::Colour clear(0x00000000);
    menuButton->setImages(false, true, true, face, 0.8f, clear, face, 0.9f, clear, face, 1.0f, clear, 0.0f);

    logo = juce::ImageCache::getFromMemory(TindleEditorData::logo_png, TindleEditorData::logo_pngSize);
    setSize(512, 512);
    waves = juce::Drawable::createFromImageData(TindleEditorData::headerwaves_svg,
                                                TindleEditorData::headerwaves_svgSize);
}

PlugInEditorHeader::~PlugInEditorHeader()
{
    menuButton->removeListener(this);
}

void PlugInEditorHeader::setProductNames(const juce::String& helpFolderPrefix,
                                         const juce::String& helpFileStem)
{
    folderPrefix = helpFolderPrefix;
    fileStem = helpFileStem;
}

void PlugInEditorHeader::paint(juce::Graphics& g)
{
    const int w = getWidth();
    g.setColour(juce::Colour(0xFFFFFFFF));
    g.fillRect(0, 0, w, 42);

    g.setColour(juce::Colours::black);
    g.drawImage(logo, 8, 4, 83, 32, 0, 0, logo.getWidth(), logo.getHeight());

    // The shadow under the white bar.
    g.setGradientFill(juce::ColourGradient(juce::Colour(0x32000000), static_cast<float>(w / 2), 42.0f,
                                           juce::Colour(0x00000000), static_cast<float>(w / 2), 48.0f,
                                           false));
    g.fillRect(0, 42, w, 6);

    g.setColour(juce::Colours::black);
    g.strokePath(ruler,
                 juce::PathStrokeType(0.5f, juce::PathStrokeType::mitered, juce::PathStrokeType::butt));

    if (waves != nullptr)
        waves->drawWithin(g, juce::Rectangle<float>(static_cast<float>(w - 296), 8.0f, 296.0f, 34.0f),
                          juce::RectanglePlacement(juce::RectanglePlacement::stretchToFit), 0.8f);

    g.setColour(juce::Colour(0xFF000000));
    g.setFont(juce::Font(26.0f, juce::Font::plain));
    g.drawText(tindle::identity::pluginName, 100, 4, w - 200, 30, juce::Justification(36), true);
}

void PlugInEditorHeader::resized()
{
    const int w = getWidth();
    menuButton->setBounds(w - 36, 8, 24, 24);
    ruler.clear();
    ruler.startNewSubPath(0.0f, 42.0f);
    ruler.lineTo(static_cast<float>(w), 42.0f);
}

juce::PopupMenu PlugInEditorHeader::buildMenu() const
{
    juce::PopupMenu menu;
    for (juce::HashMap<int, HeaderMenuItem>::Iterator i(menuItems); i.next();)
        menu.addItem(i.getKey(), i.getValue().text, i.getValue().enabled, i.getValue().ticked);
    if (menuItems.size() > 0)
        menu.addSeparator();
    menu.addItem(helpId, juce::translate("Help..."), true, false);
    menu.addSeparator();
    menu.addItem(aboutId, juce::translate("About") + " " + tindle::identity::pluginName + "...", true, false);
    return menu;
}

void PlugInEditorHeader::buttonClicked(juce::Button* button)
{
    if (button != menuButton.get())
        return;
    // The menu may outlive the header; a weak reference lets the answer go nowhere then.
    juce::WeakReference<PlugInEditorHeader> self(this);
    buildMenu().showMenuAsync(juce::PopupMenu::Options(),
                              [self](int result)
                              {
                                  if (auto* header = self.get())
                                      header->handleMenuResult(result);
                              });
}

void PlugInEditorHeader::handleMenuResult(int result)
{
    if (result == helpId)
        showHelp();
    else if (result == aboutId)
        showAbout();
    else
        menuItemSelected(result);
}

void PlugInEditorHeader::menuItemSelected(int result)
{
    for (int i = listeners.size(); --i >= 0;)
        listeners.getUnchecked(i)->menuItemSelected(result);
}

void PlugInEditorHeader::addListener(Listener* listener)
{
    listeners.addIfNotAlreadyThere(listener);
}

void PlugInEditorHeader::removeListener(Listener* listener)
{
    listeners.removeFirstMatchingValue(listener);
}

juce::File PlugInEditorHeader::getHelpFilePath(const juce::String& language) const
{
    return BundleResources::helpPageFile(BundleResources::currentBundle(), folderPrefix, fileStem, language);
}

void PlugInEditorHeader::showHelp()
{
    getHelpFilePath(BundleResources::currentLanguage()).startAsProcess({});
}

void PlugInEditorHeader::showAbout()
{
    juce::DialogWindow::LaunchOptions options;
    options.content.setOwned(new AboutDialog());
    options.dialogTitle = juce::translate("About") + " " + tindle::identity::pluginName;
    options.dialogBackgroundColour = juce::Colour(0xFFFFFFFF);
    options.componentToCentreAround = getParentComponent();
    options.useNativeTitleBar = true;
    options.resizable = false;
    if (auto* window = options.launchAsync())
        window->setAlwaysOnTop(true);
}
