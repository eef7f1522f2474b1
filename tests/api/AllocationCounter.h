// Counts the heap allocations that the library's code makes on the calling
// thread during a piece of work, for the tests of steady frames. Under
// AddressSanitizer nothing is counted: its allocator must see every request.
#ifndef PIXMORA_TESTS_API_ALLOCATIONCOUNTER_H
#define PIXMORA_TESTS_API_ALLOCATIONCOUNTER_H

#include <GLES3/gl3.h>

#include <cstddef>

#include "SanitizerBuild.h"

// Where a test keeps what it allocated to prove the counter sees it.
extern void* volatile allocationSink;

void startCountingAllocations();
// The number counted since the start.
std::size_t stopCountingAllocations();

// The allocations the library makes during `work`; the GL work queued
// before it is finished first, so that it is not part of the count.
template <typename Work>
std::size_t allocationsDuring(Work&& work) {
    glFinish();
    startCountingAllocations();
    work();
    return stopCountingAllocations();
}

#endif
