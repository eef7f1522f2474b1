// The checkpoint that safeNew and safeNewArray pass, and the drill that can
// make it refuse. Counters are atomic: the thread tests allocate from many
// threads at once.
#include <atomic>
#include <new>

#include "AllocationFailure.h"
#include "pmUtil.h"

namespace pmUtil {

namespace {

std::atomic<unsigned> failurePeriod{0};
std::atomic<unsigned> allocationsSeen{0};
std::atomic<unsigned> allocationsRefused{0};

}  // namespace

void allocationCheckpoint() {
    const unsigned period = failurePeriod.load(std::memory_order_relaxed);
    if (period == 0) return;
    const unsigned seen = allocationsSeen.fetch_add(1, std::memory_order_relaxed) + 1;
    if (seen % period != 0) return;
    allocationsRefused.fetch_add(1, std::memory_order_relaxed);
    throw std::bad_alloc();
}

void failEveryNthAllocation(unsigned period) {
    allocationsSeen.store(0, std::memory_order_relaxed);
    allocationsRefused.store(0, std::memory_order_relaxed);
    failurePeriod.store(period, std::memory_order_relaxed);
}

unsigned refusedAllocations() {
    return allocationsRefused.load(std::memory_order_relaxed);
}

}  // namespace pmUtil
