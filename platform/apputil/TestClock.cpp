// The held reading is one atomic word: UINT64_MAX marks a running clock.
#include "TestClock.h"

#include <atomic>
#include <chrono>
#include <limits>

namespace apputilTestClock {

namespace {

constexpr std::uint64_t kRunning = std::numeric_limits<std::uint64_t>::max();
std::atomic<std::uint64_t> heldAt{kRunning};

std::uint64_t systemMilliseconds() {
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(
        std::chrono::duration_cast<std::chrono::milliseconds>(sinceEpoch).count());
}

}  // namespace

void hold(std::uint64_t milliseconds) {
    heldAt.store(milliseconds);
}

void holdAtNow() {
    std::uint64_t expected = kRunning;
    heldAt.compare_exchange_strong(expected, systemMilliseconds());
}

void advance(std::uint64_t milliseconds) {
    std::uint64_t current = heldAt.load();
    while (current != kRunning && !heldAt.compare_exchange_weak(current, current + milliseconds)) {
    }
}

void release() {
    heldAt.store(kRunning);
}

bool read(std::uint64_t* milliseconds) {
    const std::uint64_t value = heldAt.load();
    if (value == kRunning) return false;
    *milliseconds = value;
    return true;
}

}  // namespace apputilTestClock
