// The plug-in's window on a real (virtual) X screen: a screenshot against a reviewed reference,
// and opening and closing it while audio runs. Run under xvfb-run.

#include "shell/BundleResources.h"
#include "shell/TindleAudioProcessor.h"
#include "support/Render.h"
#include "support/TestSignals.h"
#include "support/XScreen.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <thread>

namespace
{
constexpr int width = 600;
constexpr int height = 520;

void pump(int milliseconds)
{
    juce::MessageManager::getInstance()->runDispatchLoopUntil(milliseconds);
}

std::unique_ptr<juce::AudioProcessorEditor> openWindow(juce::AudioProcessor& processor)
{
    std::unique_ptr<juce::AudioProcessorEditor> editor(processor.createEditor());
    // A window without decorations at the screen's corner: with no window manager it stays there.
    editor->setTopLeftPosition(0, 0);
    editor->addToDesktop(0);
    editor->setVisible(true);
    return editor;
}

void closeWindow(juce::AudioProcessor& processor, std::unique_ptr<juce::AudioProcessorEditor> editor)
{
    processor.editorBeingDeleted(editor.get());
    editor.reset();
}

juce::Image toImage(const std::vector<std::uint32_t>& pixels)
{
    juce::Image image(juce::Image::RGB, width, height, false);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.setPixelAt(x, y, juce::Colour(pixels[static_cast<std::size_t>(y * width + x)]));
    return image;
}
} // namespace

TEST(EditorWindow, LooksLikeItsReviewedReference)
{
    const juce::String language = BundleResources::currentLanguage().startsWith("German") ? "de" : "en";
    std::unique_ptr<juce::AudioProcessor> processor(createPluginFilter());
    // Not prepared: with no sample rate the graphs stand still, so the picture does not depend on
    // when the timer fires.
    auto editor = openWindow(*processor);
    pump(700);
    std::vector<std::uint32_t> pixels;
    ASSERT_TRUE(tindle::test::grabScreen(0, 0, width, height, pixels)) << "no X display; run under xvfb-run";
    closeWindow(*processor, std::move(editor));

    const juce::Image shot = toImage(pixels);
    const auto saved = juce::File(TINDLE_SCREENSHOT_FOLDER).getChildFile("editor-" + language + ".png");
    saved.getParentDirectory().createDirectory();
    saved.deleteFile();
    {
        juce::FileOutputStream out(saved);
        juce::PNGImageFormat().writeImageToStream(shot, out);
    }
    const auto referenceFile =
        juce::File(TINDLE_REFERENCE_FOLDER).getChildFile("editor-" + language + ".png");
    const juce::Image reference = juce::ImageFileFormat::loadFrom(referenceFile);
    ASSERT_TRUE(reference.isValid()) << "no reference at " << referenceFile.getFullPathName()
                                     << "; the screenshot is at " << saved.getFullPathName();
    ASSERT_EQ(reference.getWidth(), width);
    ASSERT_EQ(reference.getHeight(), height);

    // Text is under 6 % of the window, and another font version moves glyph edges by a pixel: that
    // stays below 3 % of pixels changed by more than 48 and a mean difference of 4 (of 255). A
    // missing control, a wrong colour or a shifted layout breaks one of the two.
    double sum = 0.0;
    int changed = 0;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
        {
            const juce::Colour a = shot.getPixelAt(x, y);
            const juce::Colour b = reference.getPixelAt(x, y);
            const int dr = std::abs(a.getRed() - b.getRed());
            const int dg = std::abs(a.getGreen() - b.getGreen());
            const int db = std::abs(a.getBlue() - b.getBlue());
            sum += (dr + dg + db) / 3.0;
            changed += std::max({dr, dg, db}) > 48 ? 1 : 0;
        }
    const double mean = sum / (width * height);
    const double share = 100.0 * changed / (width * height);
    std::cout << "[screenshot] " << saved.getFullPathName() << ": mean difference " << mean << ", " << share
              << " % of pixels changed\n";
    EXPECT_LT(mean, 4.0);
    EXPECT_LT(share, 3.0);
}

TEST(EditorWindow, OpensAndClosesFiftyTimesWhileAudioRuns)
{
    std::unique_ptr<BasePlugInProcessor> processor(static_cast<BasePlugInProcessor*>(createPluginFilter()));
    ASSERT_TRUE(tindle::test::prepare(*processor, 2, 44100.0, 256));
    std::atomic<bool> running{true};
    std::atomic<int> blocks{0};
    std::thread audio(
        [&]
        {
            auto rng = tindle::test::seededGenerator("audio while the window opens");
            juce::AudioBuffer<float> buffer(2, 256);
            juce::MidiBuffer midi;
            std::uniform_real_distribution<float> noise(-0.1f, 0.1f);
            while (running)
            {
                for (int c = 0; c < 2; ++c)
                    for (int i = 0; i < 256; ++i)
                        buffer.setSample(c, i, noise(rng) + (i == 100 ? 0.9f : 0.0f));
                processor->processBlock(buffer, midi);
                ++blocks;
            }
        });

    for (int round = 0; round < 50; ++round)
    {
        auto editor = openWindow(*processor);
        pump(30);
        closeWindow(*processor, std::move(editor));
        // A window that forgot to leave the processor's listeners would be called here, dead.
        processor->setParameter(1, static_cast<float>(round % 10) / 10.0f);
    }
    running = false;
    audio.join();
    EXPECT_GT(blocks.load(), 50);
    EXPECT_EQ(processor->getActiveEditor(), nullptr);
}

int main(int argc, char** argv)
{
    tindle::test::ignoreXErrors();
    ::testing::InitGoogleTest(&argc, argv);
    const juce::ScopedJuceInitialiser_GUI juce;
    return RUN_ALL_TESTS();
}
