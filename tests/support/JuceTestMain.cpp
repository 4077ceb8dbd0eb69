#include <juce_events/juce_events.h>

#include <gtest/gtest.h>

// Tests that touch JUCE run with its message manager and leak detector set up, as in a host.
int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    const juce::ScopedJuceInitialiser_GUI juce;
    return RUN_ALL_TESTS();
}
