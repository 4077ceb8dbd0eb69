#pragma once

#include <cstdint>

namespace velmar::audio
{

/** x dB as a linear gain: x / 20 in float, 10 to that power in double, rounded to float. */
float decibelsToGain(float x);

/** A gain in dB: 20 log10(x) in double, rounded to float; 0 gives minus infinity. */
float gainToDecibels(float x);

/** The power of two nearest to n, a tie going to the lower one; 0 for n below 1. */
std::int32_t nearestPowerOfTwo(std::int32_t n);

/** The number of right shifts that take n to zero, less one; 0 for 0. */
std::int32_t floorLog2(std::int32_t n);

} // namespace velmar::audio
