#include <dlfcn.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "LogCapture.h"
#include "pmUtil.h"

#ifndef PIXMORA_DEVICE_PLATFORM
#include <CTimeUtil.h>
#endif

using TimeU = pmUtil::TimeData<unsigned int>;

#ifndef PIXMORA_DEVICE_PLATFORM

// The test program's own CTimeUtil::GetCurrentTime takes precedence over the
// platform library's, as LogCapture's __dlog_print does over dlog's. It hands
// out a fixed value while a test asks for one, and otherwise forwards to the
// platform library.
namespace {
bool fakeClockActive = false;
time_t fakeClockValue = 0;
}  // namespace

time_t CTimeUtil::GetCurrentTime() {
    if (fakeClockActive) return fakeClockValue;
    using Clock = time_t (*)();
    static const Clock platformClock =
        reinterpret_cast<Clock>(dlsym(RTLD_NEXT, "_ZN9CTimeUtil14GetCurrentTimeEv"));
    return platformClock ? platformClock() : 0;
}

#endif

namespace {

constexpr unsigned long long kDay = 86400000ull;

TimeU timeOf(unsigned int hours, unsigned int minutes, unsigned int seconds = 0,
             unsigned int milliseconds = 0, unsigned int days = 0) {
    TimeU time;
    time.days = days;
    time.hours = hours;
    time.minutes = minutes;
    time.seconds = seconds;
    time.milliseconds = milliseconds;
    return time;
}

void expectTime(const TimeU& time, unsigned int days, unsigned int hours, unsigned int minutes,
                unsigned int seconds, unsigned int milliseconds) {
    EXPECT_EQ(time.days, days);
    EXPECT_EQ(time.hours, hours);
    EXPECT_EQ(time.minutes, minutes);
    EXPECT_EQ(time.seconds, seconds);
    EXPECT_EQ(time.milliseconds, milliseconds);
}

std::tm localOf(time_t value) {
    std::tm fields = {};
    localtime_r(&value, &fields);
    return fields;
}

void sleepMs(int ms) {
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

// --- Records ------------------------------------------------------------------

TEST(PmUtilTimeRecords, TimeDataFieldsInOrder) {
    const TimeU time{1, 2, 3, 4, 5};
    expectTime(time, 1, 2, 3, 4, 5);
    const pmUtil::TimeData<float> zero;
    EXPECT_EQ(zero.days + zero.hours + zero.minutes + zero.seconds + zero.milliseconds, 0.0f);
    EXPECT_EQ(sizeof(TimeU), 5 * sizeof(unsigned int));
}

TEST(PmUtilTimeRecords, OffsetFieldsInOrderAndFpsDataStartsEmpty) {
    const pmUtil::OffsetUTC offset{-5, -30, 0};
    EXPECT_EQ(offset.hour, -5);
    EXPECT_EQ(offset.minute, -30);
    EXPECT_EQ(offset.second, 0);
    const pmUtil::FPSData fps;
    EXPECT_TRUE(fps.rates.empty());
    EXPECT_EQ(fps.index, 0);
    EXPECT_EQ(fps.lastTime, 0u);
    static_assert(sizeof(fps.lastTime) == 8, "the latest time is a 64-bit count");
}

// --- now ----------------------------------------------------------------------

TEST(PmUtilTime, NowIsMillisecondsOfTheSystemClock) {
    timespec before = {};
    timespec after = {};
    clock_gettime(CLOCK_REALTIME, &before);
    const std::uint64_t ms = pmUtil::now();
    clock_gettime(CLOCK_REALTIME, &after);
    const std::uint64_t low = before.tv_sec * 1000ull + before.tv_nsec / 1000000;
    const std::uint64_t high = after.tv_sec * 1000ull + after.tv_nsec / 1000000;
    EXPECT_GE(ms, low);
    EXPECT_LE(ms, high);
}

TEST(PmUtilTime, NowAdvancesWithTime) {
    const std::uint64_t first = pmUtil::now();
    sleepMs(20);
    const std::uint64_t second = pmUtil::now();
    EXPECT_GE(second - first, 19u);
    EXPECT_LT(second - first, 1000u);
}

// --- getFPS -------------------------------------------------------------------

// Calls getFPS with the latest call placed `elapsed` ms back, and gives the
// range the stored rate must lie in.
struct TimedCall {
    float mean;
    double lowRate;
    double highRate;
};

TimedCall callAfter(pmUtil::FPSData& fps, std::uint64_t elapsed) {
    const std::uint64_t before = pmUtil::now();
    fps.lastTime = before - elapsed;
    const float mean = pmUtil::getFPS(fps);
    const std::uint64_t after = pmUtil::now();
    return {mean, 1000.0 / static_cast<double>(elapsed + (after - before)),
            1000.0 / static_cast<double>(elapsed)};
}

TEST(PmUtilFps, StoresTheRateAtTheIndexAndTheTime) {
    pmUtil::FPSData fps;
    fps.rates.assign(4, 0.0f);
    const TimedCall call = callAfter(fps, 100);
    EXPECT_GE(fps.rates[0], call.lowRate - 1e-4);
    EXPECT_LE(fps.rates[0], call.highRate + 1e-4);
    EXPECT_EQ(fps.rates[1], 0.0f);
    EXPECT_EQ(fps.index, 1);
    EXPECT_LE(pmUtil::now() - fps.lastTime, 50u);
}

TEST(PmUtilFps, MeanCountsEntriesNotYetWrittenSoItStartsLow) {
    pmUtil::FPSData fps;
    fps.rates.assign(10, 0.0f);
    const TimedCall call = callAfter(fps, 100);
    EXPECT_FLOAT_EQ(call.mean, fps.rates[0] / 10.0f);
    EXPECT_LT(call.mean, 1.01f) << "one rate of about 10 among nine zeros";
}

TEST(PmUtilFps, MeanStartsAtTheValuesTheUserPutThere) {
    pmUtil::FPSData fps;
    fps.rates.assign(4, 60.0f);
    const TimedCall call = callAfter(fps, 50);
    EXPECT_FLOAT_EQ(call.mean, (60.0f * 3 + fps.rates[0]) / 4.0f);
    EXPECT_GT(call.mean, 45.0f);
}

TEST(PmUtilFps, IndexWrapsAroundTheRing) {
    pmUtil::FPSData fps;
    fps.rates.assign(3, 0.0f);
    std::vector<int> indices;
    std::vector<TimedCall> calls;
    for (int i = 0; i < 4; ++i) {
        calls.push_back(callAfter(fps, 10 * (i + 1)));
        indices.push_back(fps.index);
    }
    EXPECT_EQ(indices, (std::vector<int>{1, 2, 0, 1}));
    // The fourth call overwrote the first slot.
    const int writer[3] = {3, 1, 2};
    for (int slot = 0; slot < 3; ++slot) {
        EXPECT_GE(fps.rates[slot], calls[writer[slot]].lowRate - 1e-4) << "slot " << slot;
        EXPECT_LE(fps.rates[slot], calls[writer[slot]].highRate + 1e-4) << "slot " << slot;
    }
}

TEST(PmUtilFps, SteadyCallsGiveTheirRate) {
    pmUtil::FPSData fps;
    fps.rates.assign(5, 0.0f);
    TimedCall call = {};
    double low = 0.0;
    double high = 0.0;
    for (int i = 0; i < 5; ++i) {
        call = callAfter(fps, 40);
        low += call.lowRate / 5.0;
        high += call.highRate / 5.0;
    }
    EXPECT_GE(call.mean, low - 1e-4);
    EXPECT_LE(call.mean, high + 1e-4);
    EXPECT_LE(call.mean, 25.0f + 1e-4f);
}

TEST(PmUtilFps, TwoCallsInOneMillisecondStoreInfinityUntilOverwritten) {
    pmUtil::FPSData fps;
    fps.rates.assign(3, 30.0f);
    // Retry until both calls fall in one millisecond; nearly always the first.
    float mean = 0.0f;
    for (int attempt = 0; attempt < 100; ++attempt) {
        fps.index = 0;
        fps.lastTime = pmUtil::now();
        mean = pmUtil::getFPS(fps);
        if (std::isinf(fps.rates[0])) break;
    }
    ASSERT_TRUE(std::isinf(fps.rates[0]));
    EXPECT_TRUE(std::isinf(mean));
    EXPECT_GT(mean, 0.0f);

    // The mean stays infinite while the infinity is in the ring...
    EXPECT_TRUE(std::isinf(callAfter(fps, 20).mean));
    EXPECT_TRUE(std::isinf(callAfter(fps, 20).mean));
    // ...and is finite again once its slot is overwritten.
    const TimedCall after = callAfter(fps, 20);
    EXPECT_FALSE(std::isinf(after.mean));
    EXPECT_GT(after.mean, 0.0f);
    EXPECT_LE(after.mean, 50.0f + 1e-4f);
}

TEST(PmUtilFpsDeathTest, EmptyRingIsUnguarded) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    // Nothing checks the ring's size: the call writes through an empty
    // vector and divides by its size, and the process dies.
    EXPECT_DEATH(
        {
            pmUtil::FPSData fps;
            pmUtil::getFPS(fps);
        },
        "");
}

// --- getTimestampComponents -----------------------------------------------------

TEST(PmUtilTime, TimestampComponentsSplitMilliseconds) {
    unsigned int d = 99, h = 99, m = 99, s = 99, ms = 99;
    pmUtil::getTimestampComponents(2 * kDay + 3 * 3600000ull + 4 * 60000ull + 5 * 1000ull + 6, &d,
                                   &h, &m, &s, &ms);
    EXPECT_EQ(d, 2u);
    EXPECT_EQ(h, 3u);
    EXPECT_EQ(m, 4u);
    EXPECT_EQ(s, 5u);
    EXPECT_EQ(ms, 6u);

    pmUtil::getTimestampComponents(0, &d, &h, &m, &s, &ms);
    EXPECT_EQ(d + h + m + s + ms, 0u);

    pmUtil::getTimestampComponents(kDay - 1, &d, &h, &m, &s, &ms);
    EXPECT_EQ(d, 0u);
    EXPECT_EQ(h, 23u);
    EXPECT_EQ(m, 59u);
    EXPECT_EQ(s, 59u);
    EXPECT_EQ(ms, 999u);
}

TEST(PmUtilTime, TimestampComponentsWithoutDaysStillWrapHours) {
    unsigned int h = 0, m = 0, s = 0, ms = 0;
    pmUtil::getTimestampComponents(3 * kDay + 7 * 3600000ull + 1, nullptr, &h, &m, &s, &ms);
    EXPECT_EQ(h, 7u);
    EXPECT_EQ(m, 0u);
    EXPECT_EQ(s, 0u);
    EXPECT_EQ(ms, 1u);
}

TEST(PmUtilTime, TimestampComponentsOfTheSystemClockMatchTheCLibrary) {
    // clock_gettime rather than time(): time() may read a coarser clock that
    // lags the system clock by a tick.
    for (int attempt = 0; attempt < 5; ++attempt) {
        timespec first = {};
        timespec last = {};
        clock_gettime(CLOCK_REALTIME, &first);
        const std::uint64_t ms = pmUtil::now();
        clock_gettime(CLOCK_REALTIME, &last);
        if (first.tv_sec != last.tv_sec) continue;
        const time_t before = first.tv_sec;
        std::tm utc = {};
        gmtime_r(&before, &utc);
        unsigned int d = 0, h = 0, m = 0, s = 0, rest = 0;
        pmUtil::getTimestampComponents(ms, &d, &h, &m, &s, &rest);
        EXPECT_EQ(d, static_cast<unsigned int>(before / 86400));
        EXPECT_EQ(h, static_cast<unsigned int>(utc.tm_hour));
        EXPECT_EQ(m, static_cast<unsigned int>(utc.tm_min));
        EXPECT_EQ(s, static_cast<unsigned int>(utc.tm_sec));
        EXPECT_LT(rest, 1000u);
        return;
    }
    FAIL() << "the second changed on every attempt";
}

// --- generateTimeData, addTimeData, normalizeTimeData ------------------------------

TEST(PmUtilTime, GenerateSplitsTheProductWithDays) {
    expectTime(pmUtil::generateTimeData(3, 7), 0, 0, 0, 0, 21);
    expectTime(pmUtil::generateTimeData(1000, 90061), 1, 1, 1, 1, 0);
    expectTime(pmUtil::generateTimeData(0, 12345), 0, 0, 0, 0, 0);
    // The product is taken in 64 bits: 100 days is beyond 32 bits of ms.
    expectTime(pmUtil::generateTimeData(86400000u, 100u), 100, 0, 0, 0, 0);
}

TEST(PmUtilTime, AddCarriesThroughEveryField) {
    expectTime(pmUtil::addTimeData(timeOf(23, 59, 59, 999), timeOf(0, 0, 0, 1)), 1, 0, 0, 0, 0);
    expectTime(pmUtil::addTimeData(timeOf(10, 20, 30, 400, 2), timeOf(1, 2, 3, 4, 3)), 5, 11, 22,
               33, 404);
    // Fields beyond their range are taken at their worth.
    expectTime(pmUtil::addTimeData(timeOf(0, 90), timeOf(0, 0, 3600, 1500)), 0, 2, 30, 1, 500);
    expectTime(pmUtil::addTimeData(timeOf(20, 0), timeOf(20, 0)), 1, 16, 0, 0, 0);
}

TEST(PmUtilTime, NormalizeGivesTheFractionsOfTheHands) {
    const pmUtil::TimeData<float> hands = pmUtil::normalizeTimeData(timeOf(3, 15, 30, 500, 7));
    EXPECT_EQ(hands.days, 0.0f);
    EXPECT_FLOAT_EQ(hands.hours, 11730500.0f / 4.32e7f);
    EXPECT_FLOAT_EQ(hands.minutes, 930500.0f / 3.6e6f);
    EXPECT_FLOAT_EQ(hands.seconds, 30500.0f / 60000.0f);
    EXPECT_FLOAT_EQ(hands.milliseconds, 0.5f);
}

TEST(PmUtilTime, NormalizeTakesHoursOfTwelve) {
    const pmUtil::TimeData<float> threePm = pmUtil::normalizeTimeData(timeOf(15, 0));
    EXPECT_FLOAT_EQ(threePm.hours, 0.25f);
    EXPECT_EQ(threePm.minutes, 0.0f);
    EXPECT_EQ(pmUtil::normalizeTimeData(timeOf(12, 0)).hours, 0.0f);
    EXPECT_EQ(pmUtil::normalizeTimeData(timeOf(0, 0)).hours, 0.0f);
    const pmUtil::TimeData<float> late = pmUtil::normalizeTimeData(timeOf(23, 59, 59, 999));
    // One millisecond short of a full turn; as a float that rounds to 1.
    EXPECT_NEAR(late.hours, 1.0f, 1e-6f);
    EXPECT_NEAR(late.minutes, 1.0f, 1e-6f);
    EXPECT_NEAR(late.seconds, 1.0f, 1e-4f);
    EXPECT_FLOAT_EQ(late.milliseconds, 0.999f);
    EXPECT_FLOAT_EQ(pmUtil::normalizeTimeData(timeOf(6, 30)).hours, 0.5416666f);
    EXPECT_FLOAT_EQ(pmUtil::normalizeTimeData(timeOf(6, 30)).minutes, 0.5f);
}

// --- getGlobalTimeData --------------------------------------------------------------

TEST(PmUtilTime, GlobalTimeWithEqualOffsetsKeepsTheTimeOfDay) {
    const pmUtil::OffsetUTC nine{9, 0, 0};
    expectTime(pmUtil::getGlobalTimeData(nine, nine, timeOf(14, 25, 36, 789, 12)), 0, 14, 25, 36,
               789);
}

TEST(PmUtilTime, GlobalTimeWrapsPastMidnightForwards) {
    const pmUtil::OffsetUTC utc{0, 0, 0};
    const pmUtil::OffsetUTC plusTwo{2, 0, 0};
    expectTime(pmUtil::getGlobalTimeData(utc, plusTwo, timeOf(23, 30, 15, 250)), 0, 1, 30, 15, 250);
}

TEST(PmUtilTime, GlobalTimeWrapsPastMidnightBackwards) {
    const pmUtil::OffsetUTC tokyo{9, 0, 0};
    const pmUtil::OffsetUTC newYork{-5, 0, 0};
    expectTime(pmUtil::getGlobalTimeData(tokyo, newYork, timeOf(10, 0)), 0, 20, 0, 0, 0);
    const pmUtil::OffsetUTC utc{0, 0, 0};
    const pmUtil::OffsetUTC halfMinute{0, 0, 30};
    expectTime(pmUtil::getGlobalTimeData(halfMinute, utc, timeOf(0, 0, 10)), 0, 23, 59, 40, 0);
}

TEST(PmUtilTime, GlobalTimeWithNegativeAndFractionalOffsets) {
    const pmUtil::OffsetUTC from = pmUtil::parseOffsetUTC("-05:30:00");
    const pmUtil::OffsetUTC to = pmUtil::parseOffsetUTC("+09:00:00");
    expectTime(pmUtil::getGlobalTimeData(from, to, timeOf(12, 0)), 0, 2, 30, 0, 0);
    expectTime(pmUtil::getGlobalTimeData(to, from, timeOf(2, 30)), 0, 12, 0, 0, 0);
    const pmUtil::OffsetUTC india{5, 30, 0};
    const pmUtil::OffsetUTC utc{0, 0, 0};
    expectTime(pmUtil::getGlobalTimeData(india, utc, timeOf(3, 0)), 0, 21, 30, 0, 0);
}

// --- hourFormat12, hourFormat24 -------------------------------------------------------

TEST(PmUtilTime, HourFormat12UsesTwelveForNoonAndMidnight) {
    EXPECT_EQ(pmUtil::hourFormat12(timeOf(0, 5)), "12:05A");
    EXPECT_EQ(pmUtil::hourFormat12(timeOf(12, 5)), "12:05P");
    EXPECT_EQ(pmUtil::hourFormat12(timeOf(13, 5)), "1:05P");
}

TEST(PmUtilTime, HourFormat12AroundTheDay) {
    EXPECT_EQ(pmUtil::hourFormat12(timeOf(1, 0)), "1:00A");
    EXPECT_EQ(pmUtil::hourFormat12(timeOf(9, 7, 59)), "9:07A");
    EXPECT_EQ(pmUtil::hourFormat12(timeOf(11, 59)), "11:59A");
    EXPECT_EQ(pmUtil::hourFormat12(timeOf(23, 0)), "11:00P");
    EXPECT_EQ(pmUtil::hourFormat12(timeOf(12, 0)), "12:00P");
    EXPECT_EQ(pmUtil::hourFormat12(timeOf(0, 0)), "12:00A");
}

TEST(PmUtilTime, HourFormat24PadsBothFields) {
    EXPECT_EQ(pmUtil::hourFormat24(timeOf(0, 5)), "00:05");
    EXPECT_EQ(pmUtil::hourFormat24(timeOf(9, 7)), "09:07");
    EXPECT_EQ(pmUtil::hourFormat24(timeOf(13, 5)), "13:05");
    EXPECT_EQ(pmUtil::hourFormat24(timeOf(23, 59, 59, 999)), "23:59");
}

// --- parseOffsetUTC --------------------------------------------------------------------

TEST(PmUtilOffset, NegativeOffsetNegatesAllFields) {
    LogCapture log;
    const pmUtil::OffsetUTC offset = pmUtil::parseOffsetUTC("-05:30:00");
    EXPECT_EQ(offset.hour, -5);
    EXPECT_EQ(offset.minute, -30);
    EXPECT_EQ(offset.second, 0);
    EXPECT_TRUE(log.lines().empty()) << log.dump();
}

TEST(PmUtilOffset, PlusSignIsReadByStoi) {
    LogCapture log;
    const pmUtil::OffsetUTC offset = pmUtil::parseOffsetUTC("+09:00:00");
    EXPECT_EQ(offset.hour, 9);
    EXPECT_EQ(offset.minute, 0);
    EXPECT_EQ(offset.second, 0);
    EXPECT_TRUE(log.lines().empty()) << log.dump();

    const pmUtil::OffsetUTC plain = pmUtil::parseOffsetUTC("5:45:30");
    EXPECT_EQ(plain.hour, 5);
    EXPECT_EQ(plain.minute, 45);
    EXPECT_EQ(plain.second, 30);
}

TEST(PmUtilOffset, SignComesFromTheHourAlone) {
    // "-00" reads as 0, which isn't negative: the minutes keep their sign.
    const pmUtil::OffsetUTC offset = pmUtil::parseOffsetUTC("-00:30:00");
    EXPECT_EQ(offset.hour, 0);
    EXPECT_EQ(offset.minute, 30);
    const pmUtil::OffsetUTC seconds = pmUtil::parseOffsetUTC("-01:00:15");
    EXPECT_EQ(seconds.second, -15);
}

TEST(PmUtilOffset, WrongPartCountIsLoggedAndGoesOn) {
    LogCapture log;
    const pmUtil::OffsetUTC twoParts = pmUtil::parseOffsetUTC("05:30");
    EXPECT_EQ(log.countEndingWith("> offsetList.size() == 3"), 1) << log.dump();
    EXPECT_EQ(log.lines().size(), 2u) << "the condition, then the empty line";
    EXPECT_EQ(log.lines()[0].priority, 6);
    EXPECT_EQ(twoParts.hour, 5);
    EXPECT_EQ(twoParts.minute, 30);
    EXPECT_EQ(twoParts.second, 0);

    log.clear();
    const pmUtil::OffsetUTC fourParts = pmUtil::parseOffsetUTC("-1:2:3:4");
    EXPECT_EQ(log.countEndingWith("> offsetList.size() == 3"), 1) << log.dump();
    EXPECT_EQ(fourParts.hour, -1);
    EXPECT_EQ(fourParts.minute, -2);
    EXPECT_EQ(fourParts.second, -3);

    log.clear();
    const pmUtil::OffsetUTC none = pmUtil::parseOffsetUTC("");
    EXPECT_EQ(log.countEndingWith("> offsetList.size() == 3"), 1) << log.dump();
    EXPECT_EQ(none.hour, 0);
}

TEST(PmUtilOffset, OutOfRangeFieldsAreLoggedAndKept) {
    LogCapture log;
    const pmUtil::OffsetUTC hour = pmUtil::parseOffsetUTC("24:00:00");
    EXPECT_EQ(hour.hour, 24);
    EXPECT_EQ(log.countEndingWith("> offset.hour > -24 && offset.hour < 24"), 1) << log.dump();
    pmUtil::parseOffsetUTC("-24:00:00");
    EXPECT_EQ(log.countEndingWith("> offset.hour > -24 && offset.hour < 24"), 2) << log.dump();

    log.clear();
    const pmUtil::OffsetUTC minute = pmUtil::parseOffsetUTC("03:60:00");
    EXPECT_EQ(minute.minute, 60);
    EXPECT_EQ(log.countEndingWith("> offset.minute >= 0 && offset.minute < 60"), 1) << log.dump();

    log.clear();
    const pmUtil::OffsetUTC second = pmUtil::parseOffsetUTC("03:00:60");
    EXPECT_EQ(second.second, 60);
    EXPECT_EQ(log.countEndingWith("> offset.second >= 0 && offset.second < 60"), 1) << log.dump();

    log.clear();
    // The checks come before the negation: a negative minute is logged, then
    // turned positive by the negative hour.
    const pmUtil::OffsetUTC both = pmUtil::parseOffsetUTC("-03:-30:00");
    EXPECT_EQ(both.minute, 30);
    EXPECT_EQ(log.countEndingWith("> offset.minute >= 0 && offset.minute < 60"), 1) << log.dump();

    log.clear();
    pmUtil::parseOffsetUTC("23:59:59");
    pmUtil::parseOffsetUTC("-23:59:59");
    EXPECT_TRUE(log.lines().empty()) << log.dump();
}

TEST(PmUtilOffset, PartThatIsNoNumberThrowsWhatStoiThrows) {
    EXPECT_THROW(pmUtil::parseOffsetUTC("ab:00:00"), std::invalid_argument);
    EXPECT_THROW(pmUtil::parseOffsetUTC("01:xx:00"), std::invalid_argument);
    EXPECT_THROW(pmUtil::parseOffsetUTC("99999999999:00:00"), std::out_of_range);
}

#ifndef PIXMORA_DEVICE_PLATFORM

// --- The platform clock stand-in ---------------------------------------------------

// Sets and clears the faked platform clock around a test.
class PmUtilPlatformClock : public ::testing::Test {
protected:
    void TearDown() override { fakeClockActive = false; }

    // Fakes a platform time that getLocalTimeData will see as a new second:
    // the second before it is shown to getLocalTimeData first, whatever
    // second an earlier call saw.
    static time_t freshSecond() {
        static time_t next = 1700000000;
        next += 10;
        fakeClock(next - 1);
        pmUtil::getLocalTimeData();
        fakeClock(next);
        return next;
    }

    static void fakeClock(time_t value) {
        fakeClockValue = value;
        fakeClockActive = true;
    }
};

TEST_F(PmUtilPlatformClock, CurrentTimeIsTheCLibrarysTime) {
    const time_t before = time(nullptr);
    const time_t value = CTimeUtil::GetCurrentTime();
    const time_t after = time(nullptr);
    EXPECT_GE(value, before);
    EXPECT_LE(value, after);
}

TEST_F(PmUtilPlatformClock, TimeInfoIsTheLocalCalendarTime) {
    for (const time_t value : {time_t(0), time_t(951782400), time_t(1700000000), time(nullptr)}) {
        const CTimeInfo info(value);
        const std::tm local = localOf(value);
        EXPECT_EQ(info.year, local.tm_year + 1900);
        EXPECT_EQ(info.month, local.tm_mon + 1);
        EXPECT_EQ(info.day, local.tm_mday);
        EXPECT_EQ(info.hour, local.tm_hour);
        EXPECT_EQ(info.minute, local.tm_min);
        EXPECT_EQ(info.second, local.tm_sec);
    }
}

TEST_F(PmUtilPlatformClock, TimeInfoInUtc) {
    const char* savedZone = std::getenv("TZ");
    const std::string saved = savedZone ? savedZone : "";
    setenv("TZ", "UTC", 1);
    tzset();
    const CTimeInfo info(1700000000);  // 2023-11-14 22:13:20 UTC
    const std::string text = pmUtil::stringFormat("%d-%d-%d %d:%d:%d", info.year, info.month,
                                                  info.day, info.hour, info.minute, info.second);
    fakeClock(1700000000);
    const std::string formatted = pmUtil::getLocalDateTimeString();
    if (savedZone) {
        setenv("TZ", saved.c_str(), 1);
    } else {
        unsetenv("TZ");
    }
    tzset();
    EXPECT_EQ(text, "2023-11-14 22:13:20");
    EXPECT_EQ(formatted, "2023-11-14_22-13-20");
}

// --- getLocalTimeData ---------------------------------------------------------------

TEST_F(PmUtilPlatformClock, LocalTimeMatchesTheCLibrarysLocalTime) {
    for (int attempt = 0; attempt < 5; ++attempt) {
        const time_t before = time(nullptr);
        const TimeU local = pmUtil::getLocalTimeData();
        const time_t after = time(nullptr);
        if (before != after) continue;
        const std::tm fields = localOf(before);
        EXPECT_EQ(local.days, static_cast<unsigned int>(fields.tm_mday));
        EXPECT_EQ(local.hours, static_cast<unsigned int>(fields.tm_hour));
        EXPECT_EQ(local.minutes, static_cast<unsigned int>(fields.tm_min));
        EXPECT_EQ(local.seconds, static_cast<unsigned int>(fields.tm_sec));
        EXPECT_LT(local.milliseconds, 1000u);
        return;
    }
    FAIL() << "the second changed on every attempt";
}

TEST_F(PmUtilPlatformClock, LocalTimeTakesDayAndTimeFromThePlatform) {
    const time_t value = freshSecond();
    const TimeU local = pmUtil::getLocalTimeData();
    const std::tm fields = localOf(value);
    EXPECT_EQ(local.days, static_cast<unsigned int>(fields.tm_mday));
    EXPECT_EQ(local.hours, static_cast<unsigned int>(fields.tm_hour));
    EXPECT_EQ(local.minutes, static_cast<unsigned int>(fields.tm_min));
    EXPECT_EQ(local.seconds, static_cast<unsigned int>(fields.tm_sec));
}

TEST_F(PmUtilPlatformClock, LocalTimeFallsBackToTheSystemClockWhenThePlatformGivesZero) {
    fakeClock(0);
    for (int attempt = 0; attempt < 5; ++attempt) {
        const std::uint64_t before = pmUtil::now();
        const TimeU local = pmUtil::getLocalTimeData();
        const std::uint64_t after = pmUtil::now();
        if (before / 1000 != after / 1000) continue;
        unsigned int d = 0, h = 0, m = 0, s = 0, ms = 0;
        pmUtil::getTimestampComponents(before, &d, &h, &m, &s, &ms);
        // Days since the epoch and the time of day in UTC.
        EXPECT_EQ(local.days, d);
        EXPECT_EQ(local.hours, h);
        EXPECT_EQ(local.minutes, m);
        EXPECT_EQ(local.seconds, s);
        return;
    }
    FAIL() << "the second changed on every attempt";
}

TEST_F(PmUtilPlatformClock, MillisecondsRestartAtZeroOnThePlatformsTick) {
    freshSecond();
    const std::uint64_t syncLow = pmUtil::now();
    const TimeU first = pmUtil::getLocalTimeData();
    const std::uint64_t syncHigh = pmUtil::now();
    EXPECT_EQ(first.milliseconds, 0u);

    sleepMs(30);
    const std::uint64_t low = pmUtil::now();
    const TimeU later = pmUtil::getLocalTimeData();
    const std::uint64_t high = pmUtil::now();
    // The system clock's milliseconds since the tick, whatever its phase.
    EXPECT_GE(later.milliseconds, low - syncHigh);
    EXPECT_LE(later.milliseconds, high - syncLow);
    EXPECT_EQ(later.seconds, first.seconds);

    // The platform's next second.
    fakeClock(fakeClockValue + 1);
    const TimeU next = pmUtil::getLocalTimeData();
    EXPECT_EQ(next.milliseconds, 0u);
    EXPECT_NE(next.seconds, first.seconds);
}

TEST_F(PmUtilPlatformClock, MillisecondsCountOnModuloASecond) {
    // A platform second that lasts longer than one second of the system
    // clock: the milliseconds go round again.
    freshSecond();
    const std::uint64_t syncLow = pmUtil::now();
    pmUtil::getLocalTimeData();
    const std::uint64_t syncHigh = pmUtil::now();
    sleepMs(1100);
    const std::uint64_t low = pmUtil::now();
    const TimeU later = pmUtil::getLocalTimeData();
    const std::uint64_t high = pmUtil::now();
    EXPECT_GE(later.milliseconds + 1000, low - syncHigh);
    EXPECT_LE(later.milliseconds + 1000, high - syncLow);
}

TEST_F(PmUtilPlatformClock, GlobalTimeOfTheLocalTime) {
    const time_t value = freshSecond();
    const std::tm fields = localOf(value);
    const pmUtil::OffsetUTC from{1, 0, 0};
    const pmUtil::OffsetUTC to{-3, -30, 0};
    // A new platform second: the milliseconds are 0.
    const TimeU global = pmUtil::getGlobalTimeData(from, to);
    const TimeU expected = pmUtil::getGlobalTimeData(
        from, to,
        timeOf(static_cast<unsigned int>(fields.tm_hour), static_cast<unsigned int>(fields.tm_min),
               static_cast<unsigned int>(fields.tm_sec), 0));
    expectTime(global, 0, expected.hours, expected.minutes, expected.seconds, 0);
}

// --- getLocalDateTimeString ------------------------------------------------------------

TEST_F(PmUtilPlatformClock, DateTimeStringMatchesStrftimeOfTheSameInstant) {
    for (int attempt = 0; attempt < 5; ++attempt) {
        const time_t before = time(nullptr);
        const std::string text = pmUtil::getLocalDateTimeString();
        const time_t after = time(nullptr);
        if (before != after) continue;
        const std::tm fields = localOf(before);
        char expected[64];
        strftime(expected, sizeof(expected), "%Y-%m-%d_%H-%M-%S", &fields);
        EXPECT_EQ(text, expected);
        return;
    }
    FAIL() << "the second changed on every attempt";
}

TEST_F(PmUtilPlatformClock, DateTimeStringOfAFixedPlatformTime) {
    const time_t value = 951782400 + 3 * 3600 + 4 * 60 + 5;
    fakeClock(value);
    const std::tm fields = localOf(value);
    char expected[64];
    strftime(expected, sizeof(expected), "%Y-%m-%d_%H-%M-%S", &fields);
    EXPECT_EQ(pmUtil::getLocalDateTimeString(), expected);
}

#endif  // PIXMORA_DEVICE_PLATFORM

}  // namespace
