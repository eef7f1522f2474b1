// Desktop stand-in only: a clock that tests can hold still and move by hand,
// so that what the library measures in wall time does not depend on how fast
// the machine runs. While it is held, CTimeUtil::GetCurrentTime and the
// library's millisecond clock both read it; released, they read the system
// clock. The device's own apputil has no such thing.
#ifndef PIXMORA_PLATFORM_TESTCLOCK_H
#define PIXMORA_PLATFORM_TESTCLOCK_H

#include <cstdint>

namespace apputilTestClock {

// Holds the clock at `milliseconds` since the epoch.
void hold(std::uint64_t milliseconds);
// Holds the clock at the system clock's present reading, if not held yet.
void holdAtNow();
// Moves a held clock on; does nothing to a released one.
void advance(std::uint64_t milliseconds);
// Lets the clock run with the system clock again.
void release();
// Whether the clock is held, and if so its reading.
bool read(std::uint64_t* milliseconds);

}  // namespace apputilTestClock

#endif
