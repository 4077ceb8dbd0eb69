#pragma once

#include <cstdint>
#include <vector>

namespace tindle::test
{

/** Makes X protocol errors harmless for this process. JUCE installs its own handlers only in GUI
    applications, and a bare X server without a window manager answers some of its requests with
    errors that would otherwise end a test program. Call before JUCE opens the display. */
void ignoreXErrors();

/** The screen's pixels in a rectangle, as ARGB words row by row, read from the X server itself:
    what a user sees. False if there is no display. */
bool grabScreen(int x, int y, int width, int height, std::vector<std::uint32_t>& pixels);

} // namespace tindle::test
