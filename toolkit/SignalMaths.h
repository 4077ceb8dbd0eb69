#pragma once

#include "toolkit/Signal.h"

#include <vector>

namespace velmar::audio
{

// Whole-signal maths. Every function and binary operator makes a new block for its result and
// leaves its operands alone; a binary operator clones its left operand and reads the right one at
// the same channel and sample indices, unchecked. Only += works in place.

Signal32 abs(const Signal32& s);
Signal32 flip(const Signal32& s);
Signal32 sqrt(const Signal32& s);
/** Samples below floor become floor. */
Signal32 lowerBound(const Signal32& s, float floor);
/** Samples below lower become lower, then samples above upper become upper. */
Signal32 clip(const Signal32& s, float lower, float upper);
ComplexSignal32 toComplex(const Signal32& s);
Signal32 magnitude(const ComplexSignal32& x);

Signal32 operator+(const Signal32& a, const Signal32& b);
Signal32 operator-(const Signal32& a, const Signal32& b);
Signal32 operator*(const Signal32& a, const Signal32& b);
Signal32 operator/(const Signal32& a, const Signal32& b);
Signal32 operator*(const Signal32& a, float k);
ComplexSignal32 operator*(const ComplexSignal32& x, const ComplexSignal32& y);

/** In place on a's own block, seen by every handle to it. */
Signal32& operator+=(Signal32& a, const Signal32& b);

/** Root mean square per channel; an empty signal gives an empty array. */
PoolVector<float> rms(const Signal32& s);

/** A one-channel Hamming window of n samples. */
Signal32 hammingWindow(std::int32_t n);

} // namespace velmar::audio
