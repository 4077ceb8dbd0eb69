#include "editor/Axis.h"

#include <cmath>

namespace
{
// The step candidates 1, 2, 5, 10, 20, 50, ... at index k.
double stepCandidate(int k)
{
    static const int table[] = {1, 2, 5};
    return table[k % 3] * std::ceil(std::pow(10.0, k / 3));
}
} // namespace

Axis::Axis()
{
    setSize(96, 256);
}

void Axis::setRange(juce::int64 minimum, juce::int64 maximum)
{
    min = minimum;
    max = maximum;
    repaint();
}

void Axis::setTitle(const juce::String& newTitle)
{
    title = newTitle;
    repaint();
}

void Axis::setScale(int newScale, bool isHorizontal, bool isFlipped)
{
    scale = newScale;
    horizontal = isHorizontal;
    flipped = isFlipped;
    repaint();
}

bool Axis::computeLabels()
{
    float pixelsPerUnit = 0.0f;
    float spacing = 0.0f;
    if (!horizontal)
    {
        pixelsPerUnit = static_cast<float>(getHeight()) / static_cast<float>(max - min);
        spacing = fontHeight;
    }
    else
    {
        const float m = juce::jmax(std::abs(static_cast<float>(min)), std::abs(static_cast<float>(max)));
        pixelsPerUnit = static_cast<float>(getWidth()) / static_cast<float>(max - min);
        // Wider numbers need more room between ticks.
        spacing = static_cast<float>(static_cast<double>(fontHeight * 0.8f) *
                                     (std::log10(static_cast<double>(m)) + 3.0));
    }
    // A reversed range, or an axis of no size, shows nothing.
    if (!(pixelsPerUnit > 0.0f))
        return false;

    int k = -1;
    do
        ++k;
    while (stepCandidate(k) * static_cast<double>(std::abs(pixelsPerUnit)) < static_cast<double>(spacing));
    // A decibel axis never steps by 2, 20, 200.
    if (k % 3 == 1 && scale == decibel)
        ++k;
    const auto step = static_cast<juce::int64>(stepCandidate(k));
    if (step == 0)
        return false;

    juce::int64 v = min;
    if (scale == logarithmic)
        v = static_cast<juce::int64>(
            std::ceil(std::pow(10.0, static_cast<int>(std::log10(static_cast<double>(min)) + 0.9999999))));

    labels.clear();
    const juce::int64 low = juce::jmin(min, max);
    const juce::int64 high = juce::jmax(min, max);
    while (v >= low && v <= high)
    {
        juce::String text;
        if (scale == decibel && v == 0)
            text = juce::String::fromUTF8("-\xe2\x88\x9e"); // minus infinity
        else if (scale == decibel)
            text = juce::String::formatted(
                "%.1f", 20.0 * static_cast<double>(std::log10(std::abs(static_cast<float>(v) / 100.0f))));
        else
            text = juce::String(v);

        float position = 0.0f;
        if (scale == logarithmic)
            position = std::log10(static_cast<float>(v) / static_cast<float>(min)) /
                       std::log10(static_cast<float>(max) / static_cast<float>(min));
        else
            position = (static_cast<float>(v) - static_cast<float>(min)) / static_cast<float>(max - min);
        labels.add(new AxisLabel{text, position});

        if (scale == logarithmic)
            v *= 10;
        else
            v += min < max ? step : -step;
    }
    return true;
}

juce::Array<float> Axis::getGridPositions()
{
    computeLabels();
    juce::Array<float> positions;
    for (const auto* label : labels)
        positions.add(label->position);
    return positions;
}

void Axis::paint(juce::Graphics& g)
{
    if (scale != fixedLabels && !computeLabels())
        return;
    g.setFont(fontHeight);
    const juce::Font font = g.getCurrentFont();
    const float fh = font.getHeight();
    const auto w = static_cast<float>(getWidth());
    const auto h = static_cast<float>(getHeight());

    // Labels closer than this to the last one painted are skipped.
    float gap = fh;
    if (horizontal)
    {
        gap = 0.0f;
        for (const auto* label : labels)
            gap = juce::jmax(gap, font.getStringWidthFloat(label->text + "  "));
    }

    float last = 0.0f;
    for (int i = 0; i < labels.size(); ++i)
    {
        const auto* label = labels[i];
        const float tw = font.getStringWidthFloat(label->text);
        const float p = horizontal ? static_cast<float>(margin) +
                                         (w - 2.0f * static_cast<float>(margin)) * label->position
                                   : h - (static_cast<float>(margin) +
                                          (h - 2.0f * static_cast<float>(margin)) * label->position);
        if (i != 0 && !(static_cast<float>(std::abs(static_cast<int>(p - last))) > gap))
            continue;

        const auto tick = static_cast<float>(tickLength);
        float tx = 0.0f;
        float ty = 0.0f;
        if (!horizontal && !flipped)
        {
            g.drawLine(w, p, w - tick, p, 0.5f);
            tx = w - tick - tw - static_cast<float>(textGap);
            ty = p - fh / 2.0f;
        }
        else if (!horizontal)
        {
            g.drawLine(0.0f, p, tick, p, 0.5f);
            tx = tick + static_cast<float>(textGap);
            ty = p - fh / 2.0f;
        }
        else if (!flipped)
        {
            g.drawLine(p, 0.0f, p, tick, 0.5f);
            tx = p - tw / 2.0f;
            ty = tick;
        }
        else
        {
            g.drawLine(p, h - tick, p, h, 0.5f);
            tx = p - tw / 2.0f;
            ty = h - tick;
        }
        g.drawText(label->text, static_cast<int>(tx), static_cast<int>(ty), static_cast<int>(tw),
                   static_cast<int>(fh), juce::Justification(33), false);
        last = p;
    }

    if (horizontal)
        g.drawSingleLineText(title, getWidth() / 2, static_cast<int>(h - fh), juce::Justification(4));
    else
    {
        const juce::Graphics::ScopedSaveState saved(g);
        g.addTransform(juce::AffineTransform::rotation(-juce::MathConstants<float>::halfPi));
        g.drawSingleLineText(title, -(getHeight() / 2),
                             flipped ? static_cast<int>(w - fh) : static_cast<int>(fh),
                             juce::Justification(4));
    }
}
