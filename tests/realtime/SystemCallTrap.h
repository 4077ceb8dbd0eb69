#pragma once

namespace tindle::test
{

/** Forbids the calling thread every system call but those a thread needs to end, and counts each
    attempt while counting() is on (the call then fails with ENOSYS). For good: a filter cannot be
    lifted, so it belongs on a thread made for the purpose. False where it is not available. */
bool trapSystemCalls();

/** Attempts counted so far, and the number of the last one. */
int trappedSystemCalls();
int lastTrappedSystemCall();

/** Switches the counting on and off. */
void countSystemCalls(bool on);

} // namespace tindle::test
