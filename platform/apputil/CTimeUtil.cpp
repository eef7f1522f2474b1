// The desktop clock comes from the C library: time() for the value and
// localtime_r() for its calendar fields; a held test clock goes first.
#include "CTimeUtil.h"

#include "TestClock.h"

time_t CTimeUtil::GetCurrentTime() {
    std::uint64_t held = 0;
    if (apputilTestClock::read(&held)) return static_cast<time_t>(held / 1000);
    const time_t value = time(nullptr);
    return value == static_cast<time_t>(-1) ? 0 : value;
}

CTimeInfo::CTimeInfo(time_t value) {
    struct tm fields = {};
    if (localtime_r(&value, &fields) == nullptr) return;
    year = fields.tm_year + 1900;
    month = fields.tm_mon + 1;
    day = fields.tm_mday;
    hour = fields.tm_hour;
    minute = fields.tm_min;
    second = fields.tm_sec;
}
