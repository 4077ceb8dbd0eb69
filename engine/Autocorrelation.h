#pragma once

#include <cstdint>

namespace velmar::audio
{

/** r[k] = sum over i of x[i] x[i + k], for k from 0 to lags - 1, in double; a lag beyond the length
    gives 0. Every lag sums its products in rising order of i, as the plain loop does; processors
    with fused multiply-add round once per term instead of twice. Allocates nothing. */
void autocorrelate(const double* x, std::int32_t length, double* r, std::int32_t lags);

} // namespace velmar::audio
