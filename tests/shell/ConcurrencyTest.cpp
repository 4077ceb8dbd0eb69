// Threads meeting in the processor as they do in a host: audio on one thread; automation, state
// saves and loads, program calls, the editor's statistics reads and its toggles on another. Run
// under ThreadSanitizer by make test-tsan; here it checks what must hold whatever the interleaving.

#include "support/Material.h"
#include "support/Render.h"
#include "support/ShellProbe.h"
#include "support/StateChunk.h"
#include "support/TestSignals.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <cstring>
#include <memory>
#include <thread>

using tindle::test::ShellProbe;
using velmar::audio::Tindler;

TEST(Concurrency, ControlThreadAgainstRunningAudio)
{
    constexpr double rate = 48000.0;
    constexpr int prepared = 4096;
    ShellProbe p;
    ASSERT_TRUE(tindle::test::prepare(p, 2, rate, prepared));
    auto rng = tindle::test::seededGenerator("concurrency");
    auto music = tindle::test::musicLike(rng, 2, 96000, rate, 0.3f);
    tindle::test::addRandomClicks(music, rng, 40.0, rate);
    tindle::test::addCrackle(music, rng, 300.0, rate);

    std::atomic<bool> controlDone{false};
    std::atomic<long> nonFinite{0};
    std::atomic<long> blocks{0};
    const std::uint32_t audioSeed = rng();
    std::thread audio(
        [&]
        {
            std::mt19937 local(audioSeed);
            juce::AudioBuffer<float> buffer(2, prepared);
            juce::MidiBuffer midi;
            int position = 0;
            while (!controlDone || blocks < 20)
            {
                const int n = std::uniform_int_distribution<int>(1, prepared)(local);
                buffer.setSize(2, n, false, false, true);
                for (int c = 0; c < 2; ++c)
                    for (int i = 0; i < n; ++i)
                        buffer.setSample(c, i, music.channel(c)[(position + i) % music.length()]);
                position = (position + n) % music.length();
                p.processBlock(buffer, midi);
                for (int c = 0; c < 2; ++c)
                    for (int i = 0; i < n; ++i)
                        if (!std::isfinite(buffer.getSample(c, i)))
                            ++nonFinite;
                ++blocks;
            }
        });

    // A window opening and closing: its listener joins and leaves while automation tells the
    // listeners, and once it has left nothing may reach it.
    std::atomic<long> heard{0};
    std::thread window(
        [&]
        {
            struct Counting : BasePlugInProcessor::Listener
            {
                std::atomic<long>* heard;
                void parameterChanged(int) override { ++*heard; }
            };
            while (!controlDone)
            {
                auto listener = std::make_unique<Counting>();
                listener->heard = &heard;
                p.addListener(listener.get());
                std::this_thread::sleep_for(std::chrono::microseconds(500));
                p.removeListener(listener.get());
            }
        });

    std::mt19937 local(rng());
    std::uniform_real_distribution<float> unit(0.0f, 1.0f);
    auto& engine = dynamic_cast<Tindler&>(p.getEngine());
    long badSaves = 0;
    float clicks = 0.0f;
    float crackles = 0.0f;
    for (int step = 0; step < 300; ++step)
    {
        p.setParameter(std::uniform_int_distribution<int>(0, 6)(local), unit(local));
        if (step % 3 == 0)
            p.setParameterNotifyingHost(std::uniform_int_distribution<int>(0, 6)(local), unit(local));
        // The editor's timer and its toggles, which go to the engine directly.
        engine.readStatistics(clicks, crackles);
        if (step % 7 == 0)
            engine.setParameter(Tindler::ResidualMode, step % 14 == 0 ? 1.0f : 0.0f);
        if (step % 11 == 0)
        {
            juce::MemoryBlock saved;
            p.getStateInformation(saved);
            if (saved.getSize() != 72 || std::memcmp(saved.getData(), "RMLVDTLV", 8) != 0)
                ++badSaves;
            p.setStateInformation(saved.getData(), static_cast<int>(saved.getSize()));
        }
        if (step % 50 == 0)
            p.setCurrentProgram(0);
        std::this_thread::sleep_for(std::chrono::microseconds(300));
    }

    // The last word wins once the storm is over: a chunk with known values loads completely.
    const auto chunk = tindle::test::fullStateChunk({1.0f, 55.0f, 4.0f, 0.0f, 20.0f, 40.0f, 0.0f});
    p.setStateInformation(chunk.data(), static_cast<int>(chunk.size()));
    controlDone = true;
    audio.join();
    window.join();

    std::cout << "[concurrency] " << blocks << " blocks against 300 control steps; the window heard " << heard
              << " changes\n";
    EXPECT_EQ(nonFinite, 0);
    EXPECT_EQ(badSaves, 0);
    EXPECT_EQ(p.getEngine().parameter(Tindler::ClickSensitivity), 55.0f);
    EXPECT_EQ(p.getEngine().parameter(Tindler::ClickLength), 4.0f);
    EXPECT_EQ(p.getEngine().parameter(Tindler::CrackleReduction), 40.0f);
}
