// The built bundles under the kind of abuse a long session brings: random block sizes up to 8192,
// sample rates from 8 to 384 kHz, prepare and release with layout changes,
// automation, state loads and program changes from a second thread while audio runs, and the
// window opened and closed meanwhile. The output must stay finite and free of denormals.

#include "support/HostedPlugin.h"
#include "support/Material.h"
#include "support/TestSignals.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <thread>

namespace
{
class HostStress : public ::testing::TestWithParam<const char*>
{
};

/** Damaged music to cut blocks from, at a rate. */
velmar::audio::Signal32 material(double rate, std::mt19937& rng)
{
    auto s = tindle::test::musicLike(rng, 2, static_cast<std::int32_t>(rate), rate, 0.3f);
    tindle::test::addRandomClicks(s, rng, 30.0, rate);
    tindle::test::addCrackle(s, rng, 200.0, rate);
    return s;
}
} // namespace

TEST_P(HostStress, LongSessionAbuse)
{
    const bool vst3 = juce::String(GetParam()) == "VST3";
    const auto plugin = tindle::test::HostedPlugin::find(GetParam(), TINDLE_VST3_BUNDLE, TINDLE_LV2_BUNDLE,
                                                         "urn:velmar-digital:tindle");
    ASSERT_TRUE(plugin.found());
    auto rng = tindle::test::seededGenerator("host stress");
    // A host may not send more than it prepared for (VST3 and LV2 say so, and JUCE's wrappers remap
    // channels through buffers of that size); blocks beyond it reach the processor itself only in
    // the in-process tests, which the shell and real-time suites run.
    constexpr int prepared = 8192;
    juce::String error;
    auto instance = plugin.instantiate(44100.0, prepared, error);
    ASSERT_NE(instance, nullptr) << error;
    juce::MemoryBlock savedState;
    instance->getStateInformation(savedState);

    long badSamples = 0;
    long blocks = 0;
    for (const double rate : {44100.0, 8000.0, 384000.0, 22050.0, 96000.0, 11025.0, 192000.0, 48000.0})
    {
        SCOPED_TRACE(rate);
        // The VST3 changes between mono and stereo; the LV2 has fixed stereo ports.
        const int channels = vst3 && std::uniform_int_distribution<int>(0, 1)(rng) == 0 ? 1 : 2;
        juce::AudioProcessor::BusesLayout layout;
        const auto set = channels == 1 ? juce::AudioChannelSet::mono() : juce::AudioChannelSet::stereo();
        layout.inputBuses.add(set);
        layout.outputBuses.add(set);
        instance->releaseResources();
        ASSERT_TRUE(instance->setBusesLayout(layout));
        instance->setRateAndBufferSizeDetails(rate, prepared);
        instance->prepareToPlay(rate, prepared);
        const auto music = material(rate, rng);

        std::atomic<bool> running{true};
        std::atomic<bool> controlDone{false};
        std::atomic<long> bad{0};
        std::atomic<long> done{0};
        const std::uint32_t audioSeed = rng();
        std::thread audio(
            [&]
            {
                std::mt19937 local(audioSeed);
                juce::AudioBuffer<float> buffer(2, 8192);
                juce::MidiBuffer midi;
                int position = 0;
                while (running || done < 40)
                {
                    const int n = std::uniform_int_distribution<int>(0, 8192)(local);
                    buffer.setSize(channels, n, false, false, true);
                    for (int c = 0; c < channels; ++c)
                        for (int i = 0; i < n; ++i)
                            buffer.setSample(c, i, music.channel(c)[(position + i) % music.length()]);
                    position = (position + n) % music.length();
                    instance->processBlock(buffer, midi);
                    for (int c = 0; c < channels; ++c)
                        for (int i = 0; i < n; ++i)
                        {
                            const float v = buffer.getSample(c, i);
                            if (!std::isfinite(v) || std::fpclassify(v) == FP_SUBNORMAL)
                                ++bad;
                        }
                    ++done;
                }
            });
        const std::uint32_t controlSeed = rng();
        std::thread control(
            [&]
            {
                std::mt19937 local(controlSeed);
                auto& parameters = instance->getParameters();
                for (int step = 0; step < 200; ++step)
                {
                    if (!parameters.isEmpty())
                    {
                        auto* p = parameters.getUnchecked(
                            std::uniform_int_distribution<int>(0, parameters.size() - 1)(local));
                        p->setValue(std::uniform_real_distribution<float>(0.0f, 1.0f)(local));
                    }
                    if (step % 40 == 0)
                        instance->setStateInformation(savedState.getData(),
                                                      static_cast<int>(savedState.getSize()));
                    if (step % 50 == 25 && instance->getNumPrograms() > 0)
                        instance->setCurrentProgram(0);
                    std::this_thread::sleep_for(std::chrono::milliseconds(1));
                }
                controlDone = true;
            });
        // The window, opened and closed on the message thread while both run.
        for (int round = 0; round < 3; ++round)
        {
            if (auto* editor = instance->createEditorIfNeeded())
            {
                editor->addToDesktop(0);
                editor->setVisible(true);
                tindle::test::pumpMessages(40);
                // Closed as a host closes it: hidden and off the desktop, and the X events that
                // follow handled, before it goes. JUCE's X embedding (the LV2 host's window)
                // answers a late resize event with a call to itself that must not outlive it.
                editor->setVisible(false);
                editor->removeFromDesktop();
                tindle::test::pumpMessages(40);
                instance->editorBeingDeleted(editor);
                delete editor;
            }
            tindle::test::pumpMessages(10);
        }
        // The message thread keeps running, as in a host: a state load from another thread may wait
        // for it.
        while (!controlDone)
            tindle::test::pumpMessages(10);
        control.join();
        running = false;
        audio.join();
        badSamples += bad;
        blocks += done;
    }
    std::cout << "[stress] " << GetParam() << ": " << blocks << " blocks\n";
    EXPECT_EQ(badSamples, 0);
}

INSTANTIATE_TEST_SUITE_P(Bundles, HostStress, ::testing::Values("VST3", "LV2"));
