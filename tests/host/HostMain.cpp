#include "support/XScreen.h"

#include <juce_events/juce_events.h>

#include <gtest/gtest.h>

// The host tests run as a DAW would: with JUCE's message manager, and on an X display (xvfb-run)
// where they open plug-in windows, with X errors made harmless as in a GUI application.
int main(int argc, char** argv)
{
    tindle::test::ignoreXErrors();
    ::testing::InitGoogleTest(&argc, argv);
    const juce::ScopedJuceInitialiser_GUI juce;
    return RUN_ALL_TESTS();
}
