// Out-of-memory drill for the library's own tests: makes safeNew and
// safeNewArray fail as if the heap were exhausted. Declared here and not in a
// public header, and hidden in the shared library, so that no user of the
// library can change how it allocates.
#ifndef PIXMORA_UTIL_ALLOCATIONFAILURE_H
#define PIXMORA_UTIL_ALLOCATIONFAILURE_H

namespace pmUtil {

// From the next allocation on, every `period`-th one throws std::bad_alloc
// (1: all of them); 0 ends the drill. The count starts afresh at each call.
__attribute__((visibility("hidden"))) void failEveryNthAllocation(unsigned period);

// Allocations refused since the drill began.
__attribute__((visibility("hidden"))) unsigned refusedAllocations();

}  // namespace pmUtil

#endif
