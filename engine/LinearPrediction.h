#pragma once

#include "engine/Kernel.h"
#include "toolkit/Signal.h"

#include <cstdint>

namespace velmar::audio
{

/** Fits an all-pole predictor of order (coefficientCount - 1) to each channel of a windowed signal
    by the autocorrelation method. Channel c of the result holds 1, a[1], ..., a[p], so that the
    prediction error is e[n] = x[n] + a[1] x[n-1] + ... + a[p] x[n-p]. A channel whose recursion
    fails gets 1, 0, 0, ..., which predicts nothing. Allocates its result and work arrays. */
Signal32 linearPrediction(const Signal32& signal, std::int32_t coefficientCount);

/** Autocorrelation and Levinson-Durbin recursion in double over one channel. coefficients
    receives order + 1 values. False when the prediction error went below zero; then coefficients
    hold the recursion's state at that point. The kernels differ only in rounding. Takes its lag
    and work arrays from the memory pool. */
bool levinson(const float* samples, std::int32_t length, double* coefficients, std::int32_t order,
              Kernel kernel = bestKernel());

} // namespace velmar::audio
