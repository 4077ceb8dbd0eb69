#include "editor/Curve.h"

Curve::Curve(const juce::Array<float>& values, int curveType, juce::Colour curveColour, float lineThickness)
    : type(curveType)
    , colour(curveColour)
    , thickness(lineThickness)
{
    const int n = values.size();
    // One value gives x = 0/0, which is harmless: a curve of fewer than 2 points is not drawn.
    for (int i = 0; i < n; ++i)
        points.add({static_cast<float>(i) / static_cast<float>(n - 1), values[i]});
}
