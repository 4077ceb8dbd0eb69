#include "toolkit/ScalarHelpers.h"

#include <cmath>
#include <cstdlib>

namespace velmar::audio
{

float decibelsToGain(float x)
{
    const float exponent = x / 20.0f;
    return static_cast<float>(std::pow(10.0, static_cast<double>(exponent)));
}

float gainToDecibels(float x)
{
    return static_cast<float>(std::log10(static_cast<double>(x)) * 20.0);
}

std::int32_t nearestPowerOfTwo(std::int32_t n)
{
    if (n < 1)
        return 0;
    std::int64_t p = 1;
    while (p < n)
        p *= 2;
    const std::int64_t q = p / 2;
    // Strict: a tie goes to the lower power.
    return static_cast<std::int32_t>(std::llabs(p - n) < std::llabs(q - n) ? p : q);
}

std::int32_t floorLog2(std::int32_t n)
{
    if (n == 0)
        return 0;
    std::int32_t shifts = 0;
    for (auto v = static_cast<std::uint32_t>(n); v != 0; v >>= 1)
        ++shifts;
    return shifts - 1;
}

} // namespace velmar::audio
