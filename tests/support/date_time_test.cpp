#include "support/date_time.h"

#include <gtest/gtest.h>

namespace {

TEST(DateTime, CountsFromTheLastDayButOneOf1899) {
    EXPECT_EQ(ToDateTime({1899, 12, 30}).milliseconds, 0);
    EXPECT_EQ(ToDateTime({1899, 12, 31}).milliseconds, kMillisecondsPerDay);
    EXPECT_EQ(ToDateTime({2000, 1, 1, 12}).milliseconds, 36526 * kMillisecondsPerDay + 43'200'000);
    EXPECT_EQ(ToDateTime({1, 1, 1}).milliseconds, -693593 * kMillisecondsPerDay);
    EXPECT_EQ(ToDateTime({2024, 12, 24, 18, 5, 9, 123}).milliseconds,
              45650 * kMillisecondsPerDay + ((18 * 60 + 5) * 60 + 9) * 1000 + 123);
}

TEST(DateTime, KnowsLeapYears) {
    for (const int year : {1904, 2000, 2024, 2400}) {
        const TDateTime leapDay = ToDateTime({year, 2, 29});
        EXPECT_EQ(ToDateTime({year, 3, 1}).milliseconds - leapDay.milliseconds, kMillisecondsPerDay) << year;
    }
    for (const int year : {1900, 2023, 2100}) {
        EXPECT_EQ(ToDateTime({year, 2, 29}), TDateTime{}) << year;
    }
}

TEST(DateTime, RefusesWhatIsNoDateOrTime) {
    const TCalendarTime refused[] = {
        {},
        {2024, 0, 1},
        {2024, 13, 1},
        {2024, 257, 1},  // 1 in eight bits
        {2024, -255, 1},
        {2024, 1, 0},
        {2024, 1, 257},
        {2024, 4, 31},
        {0, 1, 1},
        {32768, 1, 1},
        {65536 + 2024, 1, 1},
        {2024, 1, 1, 24},
        {2024, 1, 1, -1},
        {2024, 1, 1, 0, 60},
        {2024, 1, 1, 0, 0, 60},
        {2024, 1, 1, 0, 0, 0, 1000},
    };
    for (const TCalendarTime& time : refused) {
        EXPECT_EQ(ToDateTime(time), TDateTime{}) << time.year << "-" << time.month << "-" << time.day;
    }
}

TEST(DateTime, FileTimesCountTheSameInUniversalTime) {
    EXPECT_EQ(UniversalDateTime(0), ToDateTime({1601, 1, 1}));
    // The first second of 1970, as the system's documentation gives it.
    EXPECT_EQ(UniversalDateTime(116'444'736'000'000'000), ToDateTime({1970, 1, 1}));
    EXPECT_EQ(UniversalDateTime(116'444'736'000'019'999), ToDateTime({1970, 1, 1, 0, 0, 0, 1}));
    EXPECT_EQ(UniversalDateTime(0x8000'0000'0000'0000), TDateTime{});
}

TEST(DateTime, EveryDayOfFourHundredYearsComesBack) {
    const std::int64_t first = ToDateTime({1700, 1, 1}).milliseconds / kMillisecondsPerDay;
    for (std::int64_t day = first; day < first + 146097; ++day) {
        // The last millisecond of each day, before 1900 too.
        const TDateTime time{(day + 1) * kMillisecondsPerDay - 1};
        const TCalendarTime calendar = ToCalendarTime(time);
        ASSERT_EQ(calendar.hour, 23);
        ASSERT_EQ(calendar.millisecond, 999);
        ASSERT_EQ(ToDateTime(calendar), time);
    }
}

}  // namespace
