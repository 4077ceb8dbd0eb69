#pragma once

#include "engine/Kernel.h"

#include <cstdint>

namespace velmar::audio
{

/** The sum over j < count of u[j] v[j], in double, in several interleaved partial sums so that no
    add waits for the one before; the order differs from one running sum only in rounding. With
    the avx2 kernel products and sums are fused. Allocates nothing. */
double dotProduct(const double* u, const double* v, std::int32_t count, Kernel kernel = bestKernel());

} // namespace velmar::audio
