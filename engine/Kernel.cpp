#include "engine/Kernel.h"

namespace velmar::audio
{

namespace
{
const bool hasAvx2 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
}

bool kernelAvailable(Kernel kernel) noexcept
{
    return kernel == Kernel::plain || hasAvx2;
}

Kernel bestKernel() noexcept
{
    return hasAvx2 ? Kernel::avx2 : Kernel::plain;
}

} // namespace velmar::audio
