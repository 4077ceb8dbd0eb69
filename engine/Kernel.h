#pragma once

namespace velmar::audio
{

/** The code paths of the engine's inner loops, chosen by processor: plain runs on any x86-64;
    avx2 needs AVX2 and FMA. The two differ only in rounding. Exposed so that tests and benchmarks
    can run each one on its own. */
enum class Kernel
{
    plain,
    avx2
};

bool kernelAvailable(Kernel kernel) noexcept;

/** The fastest kernel this processor runs; decided once per process. */
Kernel bestKernel() noexcept;

} // namespace velmar::audio
