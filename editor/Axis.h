#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

/** A graph's axis, drawn beside its plot: an integer range, a tick step that fits the axis's size
    and font, tick marks with numbers, and a title. The plot asks it for its grid positions.
    Allocates its labels each time they are computed. */
class Axis : public juce::Component
{
public:
    enum Scale
    {
        linear = 0,
        logarithmic = 1,
        decibel = 2,
        fixedLabels = 3,
    };

    struct AxisLabel
    {
        juce::String text;
        float position; // 0 at min, 1 at max
    };

    Axis();

    void setRange(juce::int64 minimum, juce::int64 maximum);
    void setTitle(const juce::String& newTitle);
    void setScale(int newScale, bool isHorizontal, bool isFlipped);

    /** Rebuilds the labels for the current size and range; false (and labels untouched) when the
        range is reversed or empty or the axis has no size. */
    bool computeLabels();

    /** Every label's position, after computing them again. */
    juce::Array<float> getGridPositions();

    const juce::OwnedArray<AxisLabel>& getLabels() const noexcept { return labels; }
    const juce::String& getTitle() const noexcept { return title; }

    void paint(juce::Graphics& g) override;
    void resized() override {}

private:
    bool horizontal = false;
    bool flipped = false;
    juce::int64 min = 0;
    juce::int64 max = 100;
    int scale = linear;
    juce::OwnedArray<AxisLabel> labels;
    int tickLength = 6;
    int margin = 17; // pixels kept clear at each end, which lines the axis up with its plot
    int textGap = 2;
    float fontHeight = 12.0f;
    juce::String title;
};
