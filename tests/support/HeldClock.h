// Holds the platform's clock for the life of a test, so that periods the
// library measures in wall time pass only when the test says so.
#ifndef PIXMORA_TESTS_HELDCLOCK_H
#define PIXMORA_TESTS_HELDCLOCK_H

#include <TestClock.h>

#include <cstdint>

class HeldClock {
public:
    explicit HeldClock(std::uint64_t startMilliseconds = 1700000000000ull) {
        apputilTestClock::hold(startMilliseconds);
    }
    ~HeldClock() { apputilTestClock::release(); }
    HeldClock(const HeldClock&) = delete;
    HeldClock& operator=(const HeldClock&) = delete;

    void advance(std::uint64_t milliseconds) { apputilTestClock::advance(milliseconds); }
};

#endif
