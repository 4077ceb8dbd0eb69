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

} // namespace velmar::audio
