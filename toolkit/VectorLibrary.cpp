#include "toolkit/VectorLibrary.h"

#include "toolkit/Ipp.h"

#include <cfloat>

namespace velmar::audio
{

namespace
{
// Plain, not atomic: the first instance of the plug-in runs this before any audio thread exists.
bool vectorLibraryStarted = false;
} // namespace

void startUpVectorLibrary()
{
    if (vectorLibraryStarted)
        return;
    ippInit();
    unsigned int saved = 0;
    ippSetFlushToZero(1, &saved);
    ippSetDenormAreZeros(1);
    ippSetNumThreads(1);
    vectorLibraryStarted = true;
}

bool denormalsAreFlushed()
{
    // Both halves are probed through memory, so that the compiler cannot fold them away.
    volatile float smallest = FLT_MIN;
    volatile float half = 0.5f;
    const float result = smallest * half; // a denormal unless results are flushed
    volatile float denormal = FLT_MIN / 4.0f;
    const float input = denormal * 2.0f; // FLT_MIN / 2 unless denormal inputs count as zero
    return result == 0.0f && input == 0.0f;
}

} // namespace velmar::audio
