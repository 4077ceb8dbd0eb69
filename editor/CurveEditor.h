#pragma once

#include "editor/Axis.h"
#include "editor/Curve.h"

#include <juce_gui_basics/juce_gui_basics.h>

/** A draggable marker of a plot. */
struct CurvePoint
{
    float x = 0.0f; // normalised, 0 to 1
    float y = 0.0f;
    float size = 0.0f; // pixels
    int shape = 1;     // 1 ellipse, 2 square, 3 to 6 a triangle pointing four ways
    juce::Colour colour = juce::Colours::black;
    int flags = 0; // bit 0: a horizontal line through the point; bit 4: a vertical one
};

/** A plot area: curves under integer keys over a white ground, with grid lines taken from two
    attached axes, and draggable points for uses that need them. Coordinates are normalised, x and
    y from 0 to 1 with y upwards. The curves are guarded by a lock of their own, so that they may
    be set from another thread than the one painting. Allocates when curves are set. */
class CurveEditor : public juce::Component
{
public:
    class Listener
    {
    public:
        virtual ~Listener() = default;
        virtual void pointChanged(int key, CurvePoint& point) = 0;
        virtual void pointSelected(int key) = 0;
        virtual void pointDoubleClicked(int key, CurvePoint& point) = 0;
        virtual void backgroundDoubleClicked() = 0;
    };

    CurveEditor();

    /** Stores a copy under key, replacing what was there. Does not repaint. */
    void setCurve(int key, const Curve& curve);
    void setXAxis(Axis* axis);
    void setYAxis(Axis* axis);
    void setPoint(int key, const CurvePoint& point);
    CurvePoint getPoint(int key) const;
    void addListener(Listener* listener);
    void removeListener(Listener* listener);

    /** The curves held, for inspection. */
    int getNumCurves() const;
    Curve getCurve(int key) const;

    /** Normalised x and y to pixels, held inside the frame. */
    float toPixelX(float x) const;
    float toPixelY(float y) const;

    /** The key of the point under a mouse position, or -1. Component's hit test for clicks stays
        as it is. */
    using juce::Component::hitTest;
    int hitTest(juce::Point<int> position) const;

    void mouseMove(const juce::MouseEvent& e) override;
    void mouseEnter(const juce::MouseEvent&) override {}
    void mouseExit(const juce::MouseEvent& e) override;
    void mouseDown(const juce::MouseEvent& e) override;
    void mouseDrag(const juce::MouseEvent& e) override;
    void mouseUp(const juce::MouseEvent& e) override;
    void mouseDoubleClick(const juce::MouseEvent& e) override;
    void paint(juce::Graphics& g) override;
    void modifierKeysChanged(const juce::ModifierKeys& modifiers) override;
    void focusGained(FocusChangeType) override {}
    void focusLost(FocusChangeType) override {}
    void resized() override {}

protected:
    // For subclasses that use the points.
    virtual void pointSelected(int) {}
    virtual void pointDragged(int, const CurvePoint&) {}
    virtual void pointDoubleClicked(int, const CurvePoint&) {}
    virtual void backgroundDoubleClicked() {}

private:
    enum ActiveState
    {
        none = 0,
        hovered = 1,
        dragged = 16,
        released = 256,
    };

    void paintPoints(juce::Graphics& g);

    juce::Array<Listener*> listeners;
    juce::Path pointShape;
    juce::HashMap<int, Curve> curves{101};
    juce::CriticalSection curvesLock;
    juce::HashMap<int, CurvePoint> points{101};
    int activePoint = -1;
    int activeState = none;
    juce::String hoverText;
    bool showHoverText = false;
    Axis* xAxis = nullptr;
    Axis* yAxis = nullptr;
    juce::Array<float> ownYGrid;
    juce::Array<float> ownXGrid;
};
