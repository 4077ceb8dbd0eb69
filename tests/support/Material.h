#pragma once

#include "toolkit/Signal.h"

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

namespace tindle::test
{

/** Music-like material that starts no click of its own: overlapping notes, each a sum of decaying
    harmonics that fades in and out over tens of milliseconds, at a low level. */
inline velmar::audio::Signal32 musicLike(std::mt19937& rng, std::int32_t channels, std::int32_t length,
                                         double sampleRate, float peak = 0.05f)
{
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    std::vector<std::vector<double>> out(static_cast<std::size_t>(channels),
                                         std::vector<double>(static_cast<std::size_t>(length), 0.0));
    const auto noteSpacing = static_cast<std::int32_t>(0.25 * sampleRate);
    for (std::int32_t onset = -noteSpacing; onset < length; onset += noteSpacing)
    {
        const double f0 = 110.0 * std::pow(2.0, 3.0 * unit(rng));
        const double decay = 0.3 + 1.2 * unit(rng);
        const auto duration = static_cast<std::int32_t>((0.6 + unit(rng)) * sampleRate);
        const auto fade = static_cast<std::int32_t>(0.03 * sampleRate);
        const int harmonics = 3 + static_cast<int>(4 * unit(rng));
        for (std::int32_t c = 0; c < channels; ++c)
        {
            const double pan = 0.6 + 0.4 * unit(rng);
            std::vector<double> phase(static_cast<std::size_t>(harmonics));
            for (auto& p : phase)
                p = 2.0 * M_PI * unit(rng);
            for (std::int32_t i = std::max(0, onset); i < std::min(length, onset + duration); ++i)
            {
                const std::int32_t t = i - onset;
                double envelope = std::exp(-t / (decay * sampleRate));
                if (t < fade)
                    envelope *= 0.5 - 0.5 * std::cos(M_PI * t / fade);
                if (duration - t < fade)
                    envelope *= 0.5 - 0.5 * std::cos(M_PI * (duration - t) / fade);
                double v = 0.0;
                for (int h = 1; h <= harmonics; ++h)
                    if (f0 * h < 0.4 * sampleRate)
                        v += std::sin(2.0 * M_PI * f0 * h * t / sampleRate +
                                      phase[static_cast<std::size_t>(h - 1)]) /
                             h;
                out[static_cast<std::size_t>(c)][static_cast<std::size_t>(i)] += pan * envelope * v;
            }
        }
    }
    // The stream itself fades in and out, so that its edges are no steps.
    const auto edge = std::min<std::int32_t>(static_cast<std::int32_t>(0.05 * sampleRate), length / 4);
    for (auto& ch : out)
        for (std::int32_t i = 0; i < edge; ++i)
        {
            const double ramp = 0.5 - 0.5 * std::cos(M_PI * i / edge);
            ch[static_cast<std::size_t>(i)] *= ramp;
            ch[static_cast<std::size_t>(length - 1 - i)] *= ramp;
        }
    double maximum = 1e-30;
    for (const auto& ch : out)
        for (const double v : ch)
            maximum = std::max(maximum, std::fabs(v));
    velmar::audio::Signal32 s(channels, length);
    for (std::int32_t c = 0; c < channels; ++c)
        for (std::int32_t i = 0; i < length; ++i)
            s.channel(c)[i] =
                static_cast<float>(out[static_cast<std::size_t>(c)][static_cast<std::size_t>(i)] *
                                   static_cast<double>(peak) / maximum);
    return s;
}

/** A click added at position on one channel, of width samples: either a sharp-edged burst of
    noise between half and full amplitude, or an oscillation that rings down from amplitude. */
inline void addClick(velmar::audio::Signal32& s, std::int32_t channel, std::int32_t position,
                     std::int32_t width, float amplitude, bool oscillation, std::mt19937& rng)
{
    std::uniform_real_distribution<float> noise(-1.0f, 1.0f);
    float* x = s.channel(channel);
    for (std::int32_t j = 0; j < width; ++j)
    {
        const float v = oscillation
                            ? std::exp(-3.0f * static_cast<float>(j) / static_cast<float>(width)) *
                                  std::cos(2.2f * static_cast<float>(j))
                            : (0.5f + 0.5f * std::fabs(noise(rng))) * (noise(rng) < 0.0f ? -1.0f : 1.0f);
        x[position + j] += amplitude * v;
    }
}

/** Where damage was put: one channel, from position, width samples. */
struct DamageEvent
{
    std::int32_t channel;
    std::int32_t position;
    std::int32_t width;
};

/** Clicks at random places, perSecond of them per second over all channels: widths from 0.05 to
    4 ms, amplitudes from 0.05 to 0.8, half of them noise bursts and half ringing oscillations; a
    third of them fall on every channel at once, as a scratch does. Returns where they went. */
inline std::vector<DamageEvent> addRandomClicks(velmar::audio::Signal32& s, std::mt19937& rng,
                                                double perSecond, double sampleRate)
{
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    const auto count = static_cast<int>(perSecond * s.length() / sampleRate);
    std::vector<DamageEvent> events;
    for (int n = 0; n < count; ++n)
    {
        const auto width = std::max<std::int32_t>(
            1, static_cast<std::int32_t>((0.05 + 3.95 * unit(rng)) * sampleRate / 1000.0));
        const auto position = static_cast<std::int32_t>(unit(rng) * (s.length() - width - 1));
        const auto amplitude = static_cast<float>(0.05 + 0.75 * unit(rng));
        const bool oscillation = unit(rng) < 0.5;
        const bool everyChannel = unit(rng) < 1.0 / 3.0;
        const auto only = static_cast<std::int32_t>(unit(rng) * s.channelCount()) % s.channelCount();
        for (std::int32_t c = 0; c < s.channelCount(); ++c)
            if (everyChannel || c == only)
            {
                addClick(s, c, position, width, amplitude, oscillation, rng);
                events.push_back({c, position, width});
            }
    }
    return events;
}

/** Crackle: perSecond short ticks per second and channel, one to three samples wide, from 0.005
    to 0.03 in amplitude. Returns where they went. */
inline std::vector<DamageEvent> addCrackle(velmar::audio::Signal32& s, std::mt19937& rng, double perSecond,
                                           double sampleRate)
{
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    const auto count = static_cast<int>(perSecond * s.length() / sampleRate);
    std::vector<DamageEvent> events;
    for (std::int32_t c = 0; c < s.channelCount(); ++c)
        for (int n = 0; n < count; ++n)
        {
            const std::int32_t width = 1 + static_cast<std::int32_t>(3 * unit(rng)) % 3;
            const auto position = static_cast<std::int32_t>(unit(rng) * (s.length() - width - 1));
            const auto amplitude = static_cast<float>(0.005 + 0.025 * unit(rng));
            const float sign = unit(rng) < 0.5 ? -1.0f : 1.0f;
            for (std::int32_t j = 0; j < width; ++j)
                s.channel(c)[position + j] += sign * amplitude * (j == 0 ? 1.0f : -0.6f);
            events.push_back({c, position, width});
        }
    return events;
}

} // namespace tindle::test
