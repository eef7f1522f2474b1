#include "AllocationCounter.h"

#include <dlfcn.h>

#include <cstring>
#include <new>

// Counts the heap allocations that the library's code makes on this thread
// while `countingAllocations` is set. The library is linked into this test
// program, so its requests come from the program itself or, on its behalf,
// from the C and C++ runtimes. The GL driver's own allocations (a software
// rasterizer sets up each draw on the heap) are not the library's and are
// left out. Every request is handed on to glibc.
extern "C" void* __libc_malloc(size_t size);
extern "C" void* __libc_calloc(size_t count, size_t size);
extern "C" void* __libc_realloc(void* pointer, size_t size);

namespace {

thread_local bool countingAllocations = false;
thread_local size_t allocationCount = 0;

bool isLibraryCaller(void* caller) {
    Dl_info self;
    Dl_info info;
    if (dladdr(reinterpret_cast<void*>(&isLibraryCaller), &self) == 0 ||
        dladdr(caller, &info) == 0 || info.dli_fname == nullptr) {
        return true;
    }
    return info.dli_fbase == self.dli_fbase || std::strstr(info.dli_fname, "libstdc++") ||
           std::strstr(info.dli_fname, "libc.so");
}

void noteAllocation(void* caller) {
    if (!countingAllocations) return;
    countingAllocations = false;  // the look-up itself is not counted
    if (isLibraryCaller(caller)) ++allocationCount;
    countingAllocations = true;
}

}  // namespace

void* volatile allocationSink = nullptr;

void startCountingAllocations() {
    allocationCount = 0;
    countingAllocations = true;
}

std::size_t stopCountingAllocations() {
    countingAllocations = false;
    return allocationCount;
}

// Under AddressSanitizer its allocator must see every request: nothing is
// replaced, and the tests that count allocations are skipped.
#if !PIXMORA_TEST_ASAN
extern "C" void* malloc(size_t size) noexcept {
    noteAllocation(__builtin_return_address(0));
    return __libc_malloc(size);
}

extern "C" void* calloc(size_t count, size_t size) noexcept {
    noteAllocation(__builtin_return_address(0));
    return __libc_calloc(count, size);
}

extern "C" void* realloc(void* pointer, size_t size) noexcept {
    noteAllocation(__builtin_return_address(0));
    return __libc_realloc(pointer, size);
}

// Replaced so that the caller seen is the code that used new, not the C++
// runtime; the runtime's delete frees it with glibc's free.
void* operator new(size_t size) {
    noteAllocation(__builtin_return_address(0));
    void* pointer = __libc_malloc(size == 0 ? 1 : size);
    if (pointer == nullptr) throw std::bad_alloc();
    return pointer;
}

void* operator new[](size_t size) {
    noteAllocation(__builtin_return_address(0));
    void* pointer = __libc_malloc(size == 0 ? 1 : size);
    if (pointer == nullptr) throw std::bad_alloc();
    return pointer;
}
#endif
