// Clock, frame-rate meter and time-of-day data. The wall clock of the day
// comes from the platform's CTimeUtil; milliseconds from the system clock.
#include <CTimeUtil.h>

#include <chrono>

#include "pmUtil.h"

#ifndef PIXMORA_DEVICE_PLATFORM
#include <TestClock.h>
#endif

namespace pmUtil {

namespace {

constexpr unsigned long long kDayMs = 86400000ull;
constexpr unsigned long long kHourMs = 3600000ull;
constexpr unsigned long long kMinuteMs = 60000ull;
constexpr unsigned long long kSecondMs = 1000ull;

TimeData<unsigned int> splitTime(unsigned long long milliseconds, bool withDays) {
    TimeData<unsigned int> time;
    getTimestampComponents(milliseconds, withDays ? &time.days : nullptr, &time.hours,
                           &time.minutes, &time.seconds, &time.milliseconds);
    return time;
}

}  // namespace

std::uint64_t now() {
#ifndef PIXMORA_DEVICE_PLATFORM
    // The desktop stand-in's clock may be held by a test.
    std::uint64_t held = 0;
    if (apputilTestClock::read(&held)) return held;
#endif
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(
        std::chrono::duration_cast<std::chrono::milliseconds>(sinceEpoch).count());
}

float getFPS(FPSData& data) {
    const std::uint64_t time = now();
    const std::uint64_t elapsed = time - data.lastTime;
    // Two calls in one millisecond store an infinite rate.
    const float rate = static_cast<float>(1000.0 / static_cast<double>(elapsed));
    data.rates[data.index] = rate;
    data.lastTime = time;
    data.index = (data.index + 1) % static_cast<int>(data.rates.size());

    float sum = 0.0f;
    for (float value : data.rates) sum += value;
    return sum / static_cast<float>(data.rates.size());
}

void getTimestampComponents(unsigned long long timestamp, unsigned int* days, unsigned int* hours,
                            unsigned int* minutes, unsigned int* seconds,
                            unsigned int* milliseconds) {
    const unsigned long long dayCount = timestamp / kDayMs;
    timestamp %= kDayMs;
    if (days != nullptr) *days = static_cast<unsigned int>(dayCount);
    *hours = static_cast<unsigned int>(timestamp / kHourMs);
    timestamp %= kHourMs;
    *minutes = static_cast<unsigned int>(timestamp / kMinuteMs);
    timestamp %= kMinuteMs;
    *seconds = static_cast<unsigned int>(timestamp / kSecondMs);
    *milliseconds = static_cast<unsigned int>(timestamp % kSecondMs);
}

TimeData<unsigned int> getLocalTimeData() {
    TimeData<unsigned int> time = splitTime(now(), true);
    const unsigned int clockMilliseconds = time.milliseconds;

    const time_t platformTime = CTimeUtil::GetCurrentTime();
    if (platformTime != 0) {
        const CTimeInfo info(platformTime);
        time.days = static_cast<unsigned int>(info.day);
        time.hours = static_cast<unsigned int>(info.hour);
        time.minutes = static_cast<unsigned int>(info.minute);
        time.seconds = static_cast<unsigned int>(info.second);
    }

    // The platform's second and the system clock's are out of phase: the
    // milliseconds restart at 0 when the platform's second changes and then
    // count on from there. The first call always counts as a change.
    static unsigned int lastSecond = ~0u;
    static unsigned int offset = 0;
    if (time.seconds == lastSecond) {
        time.milliseconds = (clockMilliseconds + offset) % 1000u;
    } else {
        lastSecond = time.seconds;
        offset = 1000u - clockMilliseconds;
        time.milliseconds = 0;
    }
    return time;
}

TimeData<unsigned int> getGlobalTimeData(const OffsetUTC& from, const OffsetUTC& to,
                                         const TimeData<unsigned int>& time) {
    // One day is added to keep the total above zero for the offsets a clock
    // meets; the day field is then dropped, so the result wraps at midnight.
    const long long total =
        (static_cast<long long>(time.seconds) + to.second - from.second) * 1000ll +
        time.milliseconds + static_cast<long long>(kDayMs) +
        (static_cast<long long>(time.minutes) + to.minute - from.minute) * 60000ll +
        (static_cast<long long>(time.hours) + to.hour - from.hour) * 3600000ll;
    return splitTime(static_cast<unsigned long long>(total), false);
}

TimeData<unsigned int> getGlobalTimeData(const OffsetUTC& from, const OffsetUTC& to) {
    return getGlobalTimeData(from, to, getLocalTimeData());
}

TimeData<unsigned int> generateTimeData(unsigned int a, unsigned int b) {
    return splitTime(static_cast<unsigned long long>(a) * b, true);
}

TimeData<unsigned int> addTimeData(const TimeData<unsigned int>& a,
                                   const TimeData<unsigned int>& b) {
    const unsigned long long total =
        (static_cast<unsigned long long>(a.days) + b.days) * kDayMs +
        (static_cast<unsigned long long>(a.hours) + b.hours) * kHourMs +
        (static_cast<unsigned long long>(a.minutes) + b.minutes) * kMinuteMs +
        (static_cast<unsigned long long>(a.seconds) + b.seconds) * kSecondMs +
        (static_cast<unsigned long long>(a.milliseconds) + b.milliseconds);
    return splitTime(total, true);
}

TimeData<float> normalizeTimeData(const TimeData<unsigned int>& time) {
    const double milliseconds = time.milliseconds;
    const double secondPart = time.seconds * 1000.0 + milliseconds;
    const double minutePart = time.minutes * 60000.0 + secondPart;
    const double hourPart = (time.hours % 12u) * 3600000.0 + minutePart;

    TimeData<float> hands;
    hands.days = 0.0f;
    hands.hours = static_cast<float>(hourPart / 4.32e7);
    hands.minutes = static_cast<float>(minutePart / 3.6e6);
    hands.seconds = static_cast<float>(secondPart / 60000.0);
    hands.milliseconds = static_cast<float>(milliseconds / 1000.0);
    return hands;
}

std::string hourFormat12(const TimeData<unsigned int>& time) {
    const int hours = static_cast<int>(time.hours);
    const int minutes = static_cast<int>(time.minutes);
    if (hours > 11) return stringFormat("%d:%02dP", hours == 12 ? 12 : hours - 12, minutes);
    return stringFormat("%d:%02dA", hours == 0 ? 12 : hours, minutes);
}

std::string hourFormat24(const TimeData<unsigned int>& time) {
    return stringFormat("%02d:%02d", static_cast<int>(time.hours), static_cast<int>(time.minutes));
}

std::string getLocalDateTimeString() {
    const CTimeInfo info(CTimeUtil::GetCurrentTime());
    // stringFormat throws std::runtime_error("Error during formatting.") when
    // the text can't be formatted.
    return stringFormat("%d-%02d-%02d_%02d-%02d-%02d", info.year, info.month, info.day, info.hour,
                        info.minute, info.second);
}

OffsetUTC parseOffsetUTC(const std::string& text) {
    const std::vector<std::string> offsetList = stringTokens(text, ":");
    PM_ASSERT(offsetList.size() == 3);

    // Missing parts read as 0; parts beyond the third are ignored.
    OffsetUTC offset;
    if (offsetList.size() > 0) offset.hour = std::stoi(offsetList[0]);
    if (offsetList.size() > 1) offset.minute = std::stoi(offsetList[1]);
    if (offsetList.size() > 2) offset.second = std::stoi(offsetList[2]);

    PM_ASSERT(offset.hour > -24 && offset.hour < 24);
    PM_ASSERT(offset.minute >= 0 && offset.minute < 60);
    PM_ASSERT(offset.second >= 0 && offset.second < 60);

    // The sign is carried by the hour alone: "-05:30:00" is -5, -30, 0.
    if (offset.hour < 0) {
        offset.minute = -offset.minute;
        offset.second = -offset.second;
    }
    return offset;
}

}  // namespace pmUtil
