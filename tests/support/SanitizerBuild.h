// Whether the test program runs under AddressSanitizer. Tests that replace
// malloc or operator new, or look into glibc's heap, leave that to the
// sanitizer's allocator then: its interceptors own every allocation.
#ifndef PIXMORA_TESTS_SANITIZERBUILD_H
#define PIXMORA_TESTS_SANITIZERBUILD_H

#if defined(__SANITIZE_ADDRESS__)
#define PIXMORA_TEST_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define PIXMORA_TEST_ASAN 1
#endif
#endif

#ifndef PIXMORA_TEST_ASAN
#define PIXMORA_TEST_ASAN 0
#endif

#endif
