// Desktop stand-in for the device's apputil time interface: the subset Pixmora
// uses. The platform's wall clock as a count of seconds, and its calendar
// breakdown in local time.
#ifndef PIXMORA_PLATFORM_CTIMEUTIL_H
#define PIXMORA_PLATFORM_CTIMEUTIL_H

#include <ctime>

class CTimeUtil {
public:
    // Seconds since the epoch by the platform's clock, or 0 when the clock
    // can't be read.
    static time_t GetCurrentTime();
};

// The calendar fields of a clock value in local time: the full year, month
// 1 to 12, day of the month 1 to 31, hour 0 to 23, minute and second. All
// fields are 0 when the value can't be broken down.
class CTimeInfo {
public:
    explicit CTimeInfo(time_t value);

    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
};

#endif
