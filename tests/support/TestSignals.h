#pragma once

#include "toolkit/Signal.h"

#include <cstdint>
#include <iostream>
#include <random>
#include <vector>

namespace tindle::test
{

/** A seeded generator that prints its seed, so that a failing run can be repeated. */
inline std::mt19937 seededGenerator(const char* what, std::uint32_t seed = 20261122u)
{
    std::cout << "[seed] " << what << ": " << seed << '\n';
    return std::mt19937(seed);
}

/** Uniform noise of the given shape, in [-amplitude, amplitude]. */
inline velmar::audio::Signal32 noise(std::mt19937& rng, std::int32_t channels, std::int32_t length,
                                     float amplitude = 0.5f)
{
    std::uniform_real_distribution<float> dist(-amplitude, amplitude);
    velmar::audio::Signal32 s(channels, length);
    for (std::int32_t c = 0; c < channels; ++c)
        for (std::int32_t i = 0; i < length; ++i)
            s.channel(c)[i] = dist(rng);
    return s;
}

/** Channel c of s as a vector. */
inline std::vector<float> samples(const velmar::audio::Signal32& s, std::int32_t c)
{
    if (s.length() == 0)
        return {};
    return std::vector<float>(s.channel(c), s.channel(c) + s.length());
}

/** Block lengths that add up to total: zeros, ones, primes, 4096 and blocks longer than a frame. */
inline std::vector<std::int32_t> randomBlockSizes(std::mt19937& rng, std::int32_t total)
{
    static const std::int32_t menu[] = {0, 1, 2, 3, 7, 13, 64, 97, 127, 509, 512, 1021, 4096, 6007, 9973};
    std::uniform_int_distribution<std::size_t> pick(0, std::size(menu) - 1);
    std::vector<std::int32_t> sizes;
    std::int32_t sum = 0;
    while (sum < total)
    {
        const std::int32_t n = std::min(menu[pick(rng)], total - sum);
        sizes.push_back(n);
        sum += n;
    }
    return sizes;
}

} // namespace tindle::test
