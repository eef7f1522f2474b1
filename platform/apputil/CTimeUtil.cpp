// The desktop clock comes from the C library: time() for the value and
// localtime_r() for its calendar fields.
#include "CTimeUtil.h"

time_t CTimeUtil::GetCurrentTime() {
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
