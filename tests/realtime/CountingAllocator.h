#pragma once

namespace tindle::test
{

/** While set on a thread, every allocation and release that thread makes is counted. */
extern thread_local bool countAllocations;
extern thread_local long allocationCount;

} // namespace tindle::test
