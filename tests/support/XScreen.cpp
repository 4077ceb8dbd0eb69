// Kept apart from JUCE's headers: Xlib's macros (None, Bool, Status) clash with JUCE's names.
#include "support/XScreen.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace tindle::test
{

namespace
{
int ignore(Display*, XErrorEvent*)
{
    return 0;
}
} // namespace

void ignoreXErrors()
{
    XSetErrorHandler(ignore);
}

bool grabScreen(int x, int y, int width, int height, std::vector<std::uint32_t>& pixels)
{
    Display* display = XOpenDisplay(nullptr);
    if (display == nullptr)
        return false;
    XSync(display, False);
    XImage* image = XGetImage(display, DefaultRootWindow(display), x, y, static_cast<unsigned int>(width),
                              static_cast<unsigned int>(height), AllPlanes, ZPixmap);
    if (image == nullptr)
    {
        XCloseDisplay(display);
        return false;
    }
    pixels.resize(static_cast<std::size_t>(width * height));
    for (int row = 0; row < height; ++row)
        for (int column = 0; column < width; ++column)
            pixels[static_cast<std::size_t>(row * width + column)] =
                0xFF000000u | static_cast<std::uint32_t>(XGetPixel(image, column, row) & 0xFFFFFF);
    XDestroyImage(image);
    XCloseDisplay(display);
    return true;
}

} // namespace tindle::test
