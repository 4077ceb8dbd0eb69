#pragma once

#include "engine/Kernel.h"

#include <cstdint>

namespace velmar::audio
{

/** r[k] = sum over i of x[i] x[i + k], for k from 0 to lags - 1, in double; a lag beyond the length
    gives 0. Every product is formed directly (no transform); the order in which a lag's products
    are summed, and whether product and sum are fused, depend on the kernel, which moves only the
    last bits of a lag. Allocates nothing. */
void autocorrelate(const double* x, std::int32_t length, double* r, std::int32_t lags,
                   Kernel kernel = bestKernel());

/** autocorrelate for the lags firstLag to endLag - 1 only, into r[firstLag] to r[endLag - 1]; every
    lag comes out with the same bits as from autocorrelate, so a caller that has the lower lags of
    the same samples can skip them. */
void autocorrelateFrom(const double* x, std::int32_t length, double* r, std::int32_t firstLag,
                       std::int32_t endLag, Kernel kernel = bestKernel());

} // namespace velmar::audio
