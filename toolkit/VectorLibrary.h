#pragma once

namespace velmar::audio
{

/** Readies the vector layer once per process: flush-to-zero and denormals-are-zero on the calling
    thread, and no worker threads. Later calls return at once. */
void startUpVectorLibrary();

/** True when the calling thread flushes denormal results and treats denormal inputs as zero. */
bool denormalsAreFlushed();

} // namespace velmar::audio
