#include "editor/VelmarLookAndFeel.h"

namespace
{
using juce::Colour;
using juce::ColourGradient;

constexpr juce::uint32 accent = 0xFFF4A460;
constexpr juce::uint32 darkAccent = 0xFFD2691E;

juce::Path roundedRect(float x, float y, float w, float h, float corner)
{
    juce::Path p;
    p.addRoundedRectangle(x, y, w, h, corner);
    return p;
}

juce::PathStrokeType strokeOf(float thickness)
{
    return juce::PathStrokeType(thickness);
}
} // namespace

VelmarLookAndFeel::VelmarLookAndFeel()
{
    setColour(juce::Slider::thumbColourId, Colour(accent));
    setColour(juce::TextEditor::highlightColourId, Colour(accent));
    setColour(juce::TextEditor::focusedOutlineColourId, Colour(accent).withMultipliedBrightness(1.3f));
    setColour(juce::ComboBox::buttonColourId, Colour(darkAccent));
    setColour(juce::PopupMenu::highlightedBackgroundColourId, Colour(darkAccent));
}

juce::Colour VelmarLookAndFeel::createBaseColour(juce::Colour colour, bool hasFocus, bool isHighlighted,
                                                 bool isDown)
{
    const Colour base = colour.withMultipliedSaturation(hasFocus ? 1.3f : 0.9f);
    if (isDown)
        return base.contrasting(0.2f);
    if (isHighlighted)
        return base.contrasting(0.1f);
    return base;
}

void VelmarLookAndFeel::drawRaisedRect(juce::Graphics& g, Colour colour, float x, float y, float w, float h,
                                       float corner, float outline)
{
    const auto s = static_cast<float>(static_cast<int>(juce::jmin(w, h)));
    const juce::Path p = roundedRect(x, y, w, h, corner);
    g.setGradientFill(
        ColourGradient(colour.withMultipliedAlpha(0.3f), x, y + h - s, colour, x, y + h, false));
    g.fillPath(p);
    g.setGradientFill(
        ColourGradient(colour.withMultipliedAlpha(0.3f), x + w - s, y, colour, x + w, y, false));
    g.fillPath(p);
    g.setGradientFill(ColourGradient(Colour(0x40000000), x, y, Colour(0x80000000), x, y + s, false));
    g.strokePath(p, strokeOf(outline));
}

void VelmarLookAndFeel::drawSunkenRect(juce::Graphics& g, Colour colour, float x, float y, float w, float h,
                                       float corner, float outline)
{
    const auto s = static_cast<float>(static_cast<int>(juce::jmin(w, h)));
    const juce::Path p = roundedRect(x, y, w, h, corner);
    g.setGradientFill(ColourGradient(colour, x, y, colour.withMultipliedAlpha(0.3f), x, y + s, false));
    g.fillPath(p);
    g.setGradientFill(ColourGradient(colour, x, y, colour.withMultipliedAlpha(0.3f), x + s, y, false));
    g.fillPath(p);
    g.setGradientFill(ColourGradient(Colour(0x80000000), x, y, Colour(0x40000000), x, y + s, false));
    g.strokePath(p, strokeOf(outline));
}

void VelmarLookAndFeel::drawSunkenEllipse(juce::Graphics& g, Colour colour, float x, float y, float w,
                                          float h, float outline)
{
    juce::Path p;
    p.addEllipse(x, y, w, h);
    g.setGradientFill(ColourGradient(colour, x, y, colour.withMultipliedAlpha(0.3f), x, y + h, false));
    g.fillPath(p);
    g.setGradientFill(ColourGradient(Colour(0x80000000), x, y, Colour(0x40000000), x, y + h, false));
    g.strokePath(p, strokeOf(outline));
}

void VelmarLookAndFeel::drawGlassRect(juce::Graphics& g, Colour colour, float x, float y, float w, float h,
                                      float corner, float outline)
{
    if (outline >= juce::jmin(w, h))
        return;
    const juce::Path p = roundedRect(x, y, w, h, corner);
    const Colour white(0xFFFFFFFF);

    ColourGradient body(white.overlaidWith(colour.withMultipliedAlpha(0.3f)), 0.0f, y,
                        white.overlaidWith(colour.withMultipliedAlpha(0.3f)), 0.0f, y + h, false);
    body.addColour(0.4, white.overlaidWith(colour));
    g.setGradientFill(body);
    g.fillPath(p);

    // The highlight across the upper part.
    g.setGradientFill(ColourGradient(Colour(0xFFFFFFFF), 0.0f, y + 0.06f * h, Colour(0x00FFFFFF), 0.0f,
                                     y + 0.3f * h, false));
    g.fillPath(roundedRect(x + 0.2f * w, y + 0.05f * h, 0.6f * w, 0.4f * h, corner));

    // Darker towards the sides.
    ColourGradient sides(Colour(0x00000000), x + 0.5f * w, y + 0.5f * h,
                         juce::Colours::black.withAlpha(colour.getFloatAlpha() * 0.5f * outline), x,
                         y + 0.5f * h, false);
    sides.addColour(0.7, Colour(0x00000000));
    sides.addColour(0.8, juce::Colours::black.withAlpha(0.1f * outline));
    g.setGradientFill(sides);
    g.fillPath(p);

    g.setColour(juce::Colours::black.withAlpha(colour.getFloatAlpha() * 0.5f));
    g.strokePath(p, strokeOf(outline));
}

void VelmarLookAndFeel::drawButtonBackground(juce::Graphics& g, juce::Button& button,
                                             const Colour& backgroundColour, bool isHighlighted, bool isDown)
{
    const float outline = !button.isEnabled() ? 0.4f : ((isDown || isHighlighted) ? 1.2f : 0.7f);
    Colour base = backgroundColour.withMultipliedSaturation(button.hasKeyboardFocus(true) ? 1.3f : 0.9f);
    if (isDown)
        base = base.contrasting(0.2f);
    else if (isHighlighted)
        base = base.contrasting(0.1f);
    base = base.withMultipliedAlpha(button.isEnabled() ? 1.0f : 0.5f);

    const float half = outline * 0.5f;
    const float left = button.isConnectedOnLeft() ? 0.1f : half;
    const float right = button.isConnectedOnRight() ? 0.1f : half;
    const float top = button.isConnectedOnTop() ? 0.1f : half;
    const float bottom = button.isConnectedOnBottom() ? 0.1f : half;
    const float w = static_cast<float>(button.getWidth()) - left - right;
    const float h = static_cast<float>(button.getHeight()) - top - bottom;
    if (isDown)
        drawSunkenRect(g, base, left, top, w, h, 3.0f, outline);
    else
        drawRaisedRect(g, base, left, top, w, h, 3.0f, outline);
}

void VelmarLookAndFeel::drawTickBox(juce::Graphics& g, juce::Button& button, float x, float y, float w,
                                    float h, bool isHighlighted, bool isDown)
{
    const float s = 0.8f * w;
    const bool focus = button.hasKeyboardFocus(false);
    const float outline = !button.isEnabled() ? 0.4f : ((isDown || isHighlighted || focus) ? 1.2f : 0.7f);
    const Colour colour =
        createBaseColour(findColour(juce::Slider::thumbColourId), focus, isHighlighted, isDown)
            .withMultipliedAlpha(button.isEnabled() ? 1.0f : 0.5f);
    const float top = (h - s) * 0.5f + y;
    const bool radio = button.getRadioGroupId() != 0;
    if (radio)
        drawSunkenEllipse(g, juce::Colours::black.withAlpha(0.1f), x, top, s, s, outline);
    else
        drawSunkenRect(g, juce::Colours::black.withAlpha(0.08f), x, top, s, s, 2.0f, outline);

    if (button.getToggleState())
    {
        const float inner = s - 2.0f * (0.2f * s);
        const float ix = x + 0.2f * s;
        const float iy = (h - inner) * 0.5f + y;
        if (radio)
            drawGlassSphere(g, ix, iy, inner, colour, 0.3f);
        else
            drawGlassRect(g, colour, ix, iy, inner, inner, 1.0f, 0.3f);
    }
}

void VelmarLookAndFeel::drawToggleButton(juce::Graphics& g, juce::ToggleButton& button, bool isHighlighted,
                                         bool isDown)
{
    const float height = static_cast<float>(button.getHeight());
    const float fontSize = juce::jmin(0.75f * height, baseFontHeight);
    const float tickWidth = 1.2f * fontSize;
    drawTickBox(g, button, 4.0f, (height - tickWidth) * 0.5f, tickWidth, tickWidth, isHighlighted, isDown);

    g.setColour(button.findColour(juce::ToggleButton::textColourId));
    g.setFont(fontSize);
    if (!button.isEnabled())
        g.setOpacity(0.5f);
    const int t = static_cast<int>(tickWidth);
    g.drawFittedText(button.getButtonText(), t + 7, 0, button.getWidth() - t - 9, button.getHeight(),
                     juce::Justification(33), 10, 0.7f);
}

void VelmarLookAndFeel::drawLinearSliderBackground(juce::Graphics& g, int x, int y, int width, int height,
                                                   float, float, float, juce::Slider::SliderStyle,
                                                   juce::Slider& slider)
{
    const auto r = static_cast<float>(getSliderThumbRadius(slider));
    const auto fx = static_cast<float>(x);
    const auto fy = static_cast<float>(y);
    const auto fw = static_cast<float>(width);
    const auto fh = static_cast<float>(height);
    if (slider.isHorizontal())
        drawSunkenRect(g, juce::Colours::black.withAlpha(0.1f), fx - r * 0.5f, fy + fh * 0.5f - r * 0.5f,
                       fw + r, r, 2.0f, 0.5f);
    else
        drawSunkenRect(g, juce::Colours::black.withAlpha(0.1f), fx + fw * 0.5f - r * 0.5f, fy - r * 0.5f, r,
                       fh + r, 2.0f, 0.5f);
}

void VelmarLookAndFeel::drawLinearSliderThumb(juce::Graphics& g, int x, int y, int width, int height,
                                              float sliderPos, float minSliderPos, float maxSliderPos,
                                              juce::Slider::SliderStyle style, juce::Slider& slider)
{
    const auto r = static_cast<float>(getSliderThumbRadius(slider) - 2);
    const bool enabled = slider.isEnabled();
    const Colour colour = createBaseColour(
        slider.findColour(juce::Slider::thumbColourId), enabled && slider.hasKeyboardFocus(false),
        enabled && (slider.isMouseOverOrDragging()), enabled && slider.isMouseButtonDown());
    const float outline = enabled ? 0.8f : 0.3f;

    if (style == juce::Slider::LinearHorizontal || style == juce::Slider::LinearVertical)
    {
        float cx = 0.0f;
        float cy = 0.0f;
        if (style == juce::Slider::LinearVertical)
        {
            cx = static_cast<float>(x) + static_cast<float>(width) * 0.5f;
            cy = sliderPos;
        }
        else
        {
            cx = sliderPos;
            cy = static_cast<float>(y) + static_cast<float>(height) * 0.5f;
        }
        drawGlassRect(g, colour, cx - r, cy - r, 2.0f * r, 2.0f * r, 3.0f, outline);
        return;
    }
    // Two- and three-value sliders keep JUCE's pointers; the plug-in's window has none.
    LookAndFeel_V2::drawLinearSliderThumb(g, x, y, width, height, sliderPos, minSliderPos, maxSliderPos,
                                          style, slider);
}

void VelmarLookAndFeel::drawRotarySlider(juce::Graphics& g, int x, int y, int width, int height,
                                         float sliderPos, float rotaryStartAngle, float rotaryEndAngle,
                                         juce::Slider& slider)
{
    const float radius = static_cast<float>(juce::jmin(width / 2, height / 2)) - 2.0f;
    const float angle = rotaryStartAngle + sliderPos * (rotaryEndAngle - rotaryStartAngle);
    const float centreX = static_cast<float>(x) + static_cast<float>(width) * 0.5f;
    const float centreY = static_cast<float>(y) + static_cast<float>(height) * 0.5f;
    const bool enabled = slider.isEnabled();
    const bool over = (slider.isMouseOverOrDragging()) && enabled;

    juce::Path filled;
    filled.addPieSegment(centreX - radius, centreY - radius, 2.0f * radius, 2.0f * radius, rotaryStartAngle,
                         angle, 0.7f);
    g.setColour(enabled
                    ? slider.findColour(juce::Slider::rotarySliderFillColourId).withAlpha(over ? 1.0f : 0.7f)
                    : Colour(0x80808080));
    g.fillPath(filled);
    juce::Path rest;
    rest.addPieSegment(centreX - radius, centreY - radius, 2.0f * radius, 2.0f * radius, angle,
                       rotaryEndAngle, 0.7f);
    g.setColour(juce::Colours::black.withAlpha(0.1f));
    g.fillPath(rest);

    // The rotary outline colour (0x1001312) is deliberately not drawn: the ring has no outline.

    const float d = 0.7f * 2.0f * radius;
    const float kx = centreX - d * 0.5f;
    const float ky = centreY - d * 0.5f;
    const bool focus = slider.hasKeyboardFocus(false);
    Colour knob = Colour(0xFF808080).withMultipliedSaturation(focus ? 1.3f : 0.9f);
    if (over)
        knob = knob.contrasting(0.1f);
    // The gradient's end point takes its y from kx, and keeps it so.
    g.setGradientFill(
        ColourGradient(knob.withMultipliedAlpha(0.3f), kx, ky, knob, kx + d, kx + 0.3f * d, false));
    g.fillEllipse(kx, ky, d, d);
    g.setGradientFill(ColourGradient(juce::Colours::white.withAlpha(0.5f), kx, ky,
                                     juce::Colours::black.withAlpha(0.5f), kx + d, kx + d, false));
    g.drawEllipse(kx, ky, d, d, 3.0f);

    Colour pointer(0xFF808080);
    if (enabled)
    {
        pointer = findColour(juce::Slider::thumbColourId).withMultipliedSaturation(focus ? 1.3f : 0.9f);
        if (over)
            pointer = pointer.contrasting(0.1f);
    }
    drawGlassSphere(g, centreX + std::sin(angle) * 0.45f * radius - 3.0f,
                    centreY - std::cos(angle) * 0.45f * radius - 3.0f, 6.0f, pointer, 0.3f);
}

void VelmarLookAndFeel::drawGroupComponentOutline(juce::Graphics& g, int width, int height,
                                                  const juce::String& text, const juce::Justification&,
                                                  juce::GroupComponent& group)
{
    const juce::Font font(baseFontHeight, juce::Font::bold);
    const float fh = font.getHeight();
    const float tw = font.getStringWidthFloat(text);
    g.setColour(Colour(0x40FFFFFF));
    // The caption's tab, then the body: pale panels, no outline, the caption always at the left.
    g.fillRoundedRectangle(0.0f, 0.0f, tw + 24.0f, fh + 12.0f, 3.0f);
    g.fillRoundedRectangle(0.0f, fh + 12.0f, static_cast<float>(width),
                           static_cast<float>(height) - (fh + 12.0f), 3.0f);
    g.setColour(group.findColour(juce::GroupComponent::textColourId));
    g.setFont(font);
    g.drawText(text, juce::Rectangle<float>(0.0f, 0.0f, tw + 24.0f, fh + 12.0f), juce::Justification(36),
               false);
}
