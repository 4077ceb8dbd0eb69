#pragma once

#include <juce_graphics/juce_graphics.h>

/** A curve of a graph: points spread evenly over x from 0 to 1, with the given values as y, and
    how to draw them. Values are used as given: already normalised, neither scaled nor clipped.
    A value type; copying copies the points. */
class Curve
{
public:
    enum Type
    {
        filled = 0,  // the area down to the bottom edge
        stroked = 1, // a line of the given thickness
    };

    Curve() = default;
    Curve(const juce::Array<float>& values, int curveType, juce::Colour curveColour, float lineThickness);
    virtual ~Curve() = default;
    Curve(const Curve&) = default;
    Curve& operator=(const Curve&) = default;

    int type = filled;
    juce::Array<juce::Point<float>> points;
    juce::Colour colour;
    float thickness = 1.0f;
};
