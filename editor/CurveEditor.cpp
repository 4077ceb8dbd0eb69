#include "editor/CurveEditor.h"

#include "editor/VelmarLookAndFeel.h"

CurveEditor::CurveEditor()
{
    pointShape.startNewSubPath(-0.5f, -0.2f);
    pointShape.lineTo(0.0f, 0.3f);
    pointShape.lineTo(0.5f, -0.2f);
    pointShape.closeSubPath();
    setSize(320, 200);
}

void CurveEditor::setCurve(int key, const Curve& curve)
{
    const juce::ScopedLock lock(curvesLock);
    curves.set(key, curve);
}

int CurveEditor::getNumCurves() const
{
    const juce::ScopedLock lock(curvesLock);
    return curves.size();
}

Curve CurveEditor::getCurve(int key) const
{
    const juce::ScopedLock lock(curvesLock);
    return curves[key];
}

void CurveEditor::setXAxis(Axis* axis)
{
    xAxis = axis;
    repaint();
}

void CurveEditor::setYAxis(Axis* axis)
{
    yAxis = axis;
    repaint();
}

void CurveEditor::setPoint(int key, const CurvePoint& point)
{
    points.set(key, point);
}

CurvePoint CurveEditor::getPoint(int key) const
{
    return points.contains(key) ? points[key] : CurvePoint{};
}

void CurveEditor::addListener(Listener* listener)
{
    listeners.addIfNotAlreadyThere(listener);
}

void CurveEditor::removeListener(Listener* listener)
{
    listeners.removeFirstMatchingValue(listener);
}

float CurveEditor::toPixelX(float x) const
{
    const auto w = static_cast<float>(getWidth());
    return juce::jlimit(1.0f, w - 1.0f, (w - 1.0f) * x + 1.0f);
}

float CurveEditor::toPixelY(float y) const
{
    const auto h = static_cast<float>(getHeight());
    return juce::jlimit(1.0f, h - 1.0f, (h - 1.0f) * (1.0f - y) + 1.0f);
}

int CurveEditor::hitTest(juce::Point<int> position) const
{
    for (juce::HashMap<int, CurvePoint>::Iterator i(points); i.next();)
    {
        const CurvePoint p = i.getValue();
        const int left = static_cast<int>(toPixelX(p.x) - p.size / 2.0f);
        const int top = static_cast<int>(toPixelY(p.y) - p.size / 2.0f);
        const int size = static_cast<int>(p.size);
        if (position.x >= left && position.x < left + size && position.y >= top && position.y < top + size)
            return i.getKey();
    }
    return -1;
}

void CurveEditor::paint(juce::Graphics& g)
{
    const auto w = static_cast<float>(getWidth());
    const auto h = static_cast<float>(getHeight());
    g.fillAll(juce::Colour(0xFFFFFFFF));

    {
        const juce::ScopedLock lock(curvesLock);
        for (juce::HashMap<int, Curve>::Iterator i(curves); i.next();)
        {
            const Curve curve = i.getValue();
            if (curve.points.size() < 2)
                continue;
            g.setColour(curve.colour);
            juce::Path path;
            if (curve.type == Curve::filled)
            {
                // From the bottom left through every point to the bottom right.
                path.startNewSubPath(0.0f, h);
                for (const auto& p : curve.points)
                    path.lineTo(toPixelX(p.x), toPixelY(p.y));
                path.lineTo(w, h);
                path.closeSubPath();
                g.fillPath(path);
            }
            else if (curve.type == Curve::stroked)
            {
                for (int j = 1; j < curve.points.size(); ++j)
                    path.addLineSegment({toPixelX(curve.points[j - 1].x), toPixelY(curve.points[j - 1].y),
                                         toPixelX(curve.points[j].x), toPixelY(curve.points[j].y)},
                                        curve.thickness);
                g.fillPath(path);
            }
        }
    }

    // The grid lies over the curves.
    const juce::Array<float> xGrid = xAxis != nullptr ? xAxis->getGridPositions() : ownXGrid;
    for (const float x : xGrid)
    {
        g.setColour(juce::Colours::black.withAlpha(0.15f));
        g.drawLine(toPixelX(x), 0.0f, toPixelX(x), h, 0.5f);
    }
    const juce::Array<float> yGrid = yAxis != nullptr ? yAxis->getGridPositions() : ownYGrid;
    for (const float y : yGrid)
    {
        g.setColour(juce::Colours::black.withAlpha(0.15f));
        g.drawLine(0.0f, toPixelY(y), w, toPixelY(y), 0.5f);
    }

    paintPoints(g);

    g.setColour(juce::Colour(0xFF828282));
    g.drawRect(getLocalBounds(), 1);
}

void CurveEditor::paintPoints(juce::Graphics& g)
{
    const auto w = static_cast<float>(getWidth());
    const auto h = static_cast<float>(getHeight());
    for (juce::HashMap<int, CurvePoint>::Iterator i(points); i.next();)
    {
        const CurvePoint p = i.getValue();
        const int state = i.getKey() == activePoint ? activeState : 0;
        g.setColour(VelmarLookAndFeel::createBaseColour(p.colour, state == released, state == hovered,
                                                        state == dragged));
        const float px = toPixelX(p.x);
        const float py = toPixelY(p.y);
        if ((p.flags & 1) != 0)
            g.drawHorizontalLine(static_cast<int>(py), 0.0f, w);
        if ((p.flags & 16) != 0)
            g.drawVerticalLine(static_cast<int>(px), 0.0f, h);

        if (p.shape == 1)
            g.fillEllipse(px - p.size / 2.0f, py - p.size / 2.0f, p.size, p.size);
        else if (p.shape == 2)
            g.fillRect(px - p.size / 2.0f, py - p.size / 2.0f, p.size, p.size);
        else if (p.shape >= 3 && p.shape <= 6)
        {
            static const float turns[] = {juce::MathConstants<float>::halfPi,
                                          -juce::MathConstants<float>::halfPi, 0.0f,
                                          juce::MathConstants<float>::pi};
            g.fillPath(pointShape,
                       juce::AffineTransform::rotation(turns[p.shape - 3]).scaled(p.size).translated(px, py));
        }

        if (state != 0 && showHoverText)
        {
            const float textWidth = g.getCurrentFont().getStringWidthFloat(hoverText);
            g.setFont(13.0f);
            float left = static_cast<float>(static_cast<int>(px)) - textWidth / 2.0f;
            const float top = p.y > 0.5f ? py + 2.0f * p.size : py - 2.0f * p.size;
            if (left + textWidth > w)
                left = w - textWidth;
            if (left < 0.0f)
                left = 0.0f;
            const juce::Rectangle<float> box(left, top, textWidth, 13.0f);
            g.setColour(juce::Colours::white.withAlpha(0.5f));
            g.fillRect(box);
            g.setColour(juce::Colours::black);
            g.drawText(hoverText, box, juce::Justification(9), false);
        }
    }
}

void CurveEditor::mouseMove(const juce::MouseEvent& e)
{
    if (activePoint >= 0 && activeState == dragged)
    {
        if (showHoverText)
            repaint();
        return;
    }
    activePoint = hitTest(e.getPosition());
    activeState = activePoint >= 0 ? hovered : none;
    if (showHoverText)
        repaint();
}

void CurveEditor::mouseExit(const juce::MouseEvent&)
{
    activePoint = -1;
    repaint();
}

void CurveEditor::mouseDown(const juce::MouseEvent& e)
{
    activePoint = hitTest(e.getPosition());
    pointSelected(activePoint);
    showHoverText = true;
    for (int i = listeners.size(); --i >= 0;)
        listeners.getUnchecked(i)->pointSelected(activePoint);
    if (activePoint < 0)
        return;
    activeState = dragged;
    CurvePoint point = getPoint(activePoint);
    for (int i = listeners.size(); --i >= 0;)
        listeners.getUnchecked(i)->pointChanged(activePoint, point);
    points.set(activePoint, point);
}

void CurveEditor::mouseDrag(const juce::MouseEvent& e)
{
    if (activePoint < 0 || activeState != dragged)
        return;
    CurvePoint point = getPoint(activePoint);
    point.x = juce::jlimit(0.0f, 1.0f, (static_cast<float>(e.x) - 1.0f) / static_cast<float>(getWidth()));
    point.y =
        juce::jlimit(0.0f, 1.0f, 1.0f - (static_cast<float>(e.y) - 1.0f) / static_cast<float>(getHeight()));
    pointDragged(activePoint, point);
    for (int i = listeners.size(); --i >= 0;)
        listeners.getUnchecked(i)->pointChanged(activePoint, point);
    points.set(activePoint, point);
    repaint();
}

void CurveEditor::mouseUp(const juce::MouseEvent&)
{
    if (activePoint < 0)
        return;
    activeState = released;
    showHoverText = false;
    repaint();
}

void CurveEditor::mouseDoubleClick(const juce::MouseEvent&)
{
    if (activePoint < 0)
    {
        backgroundDoubleClicked();
        for (int i = listeners.size(); --i >= 0;)
            listeners.getUnchecked(i)->backgroundDoubleClicked();
        return;
    }
    CurvePoint point = getPoint(activePoint);
    pointDoubleClicked(activePoint, point);
    for (int i = listeners.size(); --i >= 0;)
        listeners.getUnchecked(i)->pointDoubleClicked(activePoint, point);
}

void CurveEditor::modifierKeysChanged(const juce::ModifierKeys& modifiers)
{
    const bool show = modifiers.isCtrlDown();
    if (show != showHoverText)
    {
        showHoverText = show;
        repaint();
    }
}
