// Makes the editor's three raster pictures, which are committed in editor/resources:
//   background.jpg   350 x 350, a pale grey-blue paper texture that tiles without seams
//   logo.png          83 x 32, "Velmar Digital" in dark letters on transparency
//   menubutton.png    48 x 48, a green disc with a white triangle pointing down
// The texture's noise is seeded, so the pictures come out the same each time:
//   tindle-make-editor-pictures editor/resources

#include <juce_graphics/juce_graphics.h>

#include <cstdio>
#include <random>

namespace
{
bool save(const juce::Image& image, juce::ImageFileFormat& format, const juce::File& file)
{
    file.deleteFile();
    juce::FileOutputStream out(file);
    return out.openedOk() && format.writeImageToStream(image, out);
}

juce::Image background()
{
    // Smooth noise on a 25-cell lattice that wraps at 350 pixels, over a fine grain: a texture
    // whose mean is about 198, 206, 210 and which tiles without a visible seam.
    constexpr int size = 350;
    constexpr int cells = 14;
    std::mt19937 rng(4);
    std::uniform_real_distribution<float> unit(-1.0f, 1.0f);
    float lattice[cells][cells];
    for (auto& row : lattice)
        for (auto& v : row)
            v = unit(rng);
    juce::Image image(juce::Image::RGB, size, size, false);
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x)
        {
            const float fx = static_cast<float>(x) * cells / size;
            const float fy = static_cast<float>(y) * cells / size;
            const int x0 = static_cast<int>(fx);
            const int y0 = static_cast<int>(fy);
            const float tx = fx - static_cast<float>(x0);
            const float ty = fy - static_cast<float>(y0);
            const auto at = [&](int i, int j) { return lattice[j % cells][i % cells]; };
            const float top = at(x0, y0) + (at(x0 + 1, y0) - at(x0, y0)) * tx;
            const float bottom = at(x0, y0 + 1) + (at(x0 + 1, y0 + 1) - at(x0, y0 + 1)) * tx;
            const float cloud = top + (bottom - top) * ty;
            const float shade = 4.0f * cloud + 3.0f * unit(rng);
            image.setPixelAt(x, y,
                             juce::Colour::fromRGB(static_cast<juce::uint8>(198.0f + shade),
                                                   static_cast<juce::uint8>(206.0f + shade),
                                                   static_cast<juce::uint8>(210.0f + shade)));
        }
    return image;
}

juce::Image logo()
{
    juce::Image image(juce::Image::ARGB, 83, 32, true);
    juce::Graphics g(image);
    g.setColour(juce::Colour(0xFF2A3A4A));
    g.fillRoundedRectangle(1.0f, 4.0f, 24.0f, 24.0f, 4.0f);
    g.setColour(juce::Colours::white);
    g.setFont(juce::Font(18.0f, juce::Font::bold));
    g.drawText("V", 1, 4, 24, 24, juce::Justification::centred);
    g.setColour(juce::Colour(0xFF2A3A4A));
    g.setFont(juce::Font(12.0f, juce::Font::bold));
    g.drawText("Velmar", 28, 3, 55, 14, juce::Justification::centredLeft);
    g.setFont(juce::Font(11.0f, juce::Font::plain));
    g.drawText("Digital", 28, 16, 55, 13, juce::Justification::centredLeft);
    return image;
}

juce::Image menuButton()
{
    juce::Image image(juce::Image::ARGB, 48, 48, true);
    juce::Graphics g(image);
    g.setColour(juce::Colour(0xFF176700));
    g.fillEllipse(1.0f, 1.0f, 46.0f, 46.0f);
    g.setGradientFill(juce::ColourGradient(juce::Colour(0xFF6A9A30), 24.0f, 8.0f, juce::Colour(0xFF528120),
                                           24.0f, 40.0f, false));
    g.fillEllipse(4.0f, 4.0f, 40.0f, 40.0f);
    juce::Path triangle;
    triangle.addTriangle(14.0f, 18.0f, 34.0f, 18.0f, 24.0f, 32.0f);
    g.setColour(juce::Colours::white);
    g.fillPath(triangle);
    return image;
}
} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
    {
        std::fprintf(stderr, "usage: tindle-make-editor-pictures FOLDER\n");
        return 2;
    }
    const juce::File folder = juce::File::getCurrentWorkingDirectory().getChildFile(argv[1]);
    juce::JPEGImageFormat jpeg;
    jpeg.setQuality(0.9f);
    juce::PNGImageFormat png;
    const bool ok = save(background(), jpeg, folder.getChildFile("background.jpg")) &&
                    save(logo(), png, folder.getChildFile("logo.png")) &&
                    save(menuButton(), png, folder.getChildFile("menubutton.png"));
    std::printf("%s\n", ok ? "pictures written" : "could not write the pictures");
    return ok ? 0 : 1;
}
