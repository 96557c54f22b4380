// The program's date-times: local times counted in whole milliseconds.
#pragma once

#include <compare>
#include <cstdint>

// A local date-time as milliseconds since 30 December 1899 00:00; 0 means "unknown". Whole milliseconds, so
// that a time read back from a file equals the one it was written from.
struct TDateTime {
    std::int64_t milliseconds = 0;

    friend constexpr auto operator<=>(TDateTime, TDateTime) = default;
};

inline constexpr std::int64_t kMillisecondsPerDay = 86'400'000;

// A calendar time as the system's SYSTEMTIME holds it.
struct TCalendarTime {
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int millisecond = 0;
};

// The date-time of a valid calendar time of the years 1 to 9999 or later; 0 when it is no valid date or time.
TDateTime ToDateTime(const TCalendarTime& time);

// The same count for a moment in UTC, from the system's file time (100 ns since 1601): it orders files
// without the hour that clocks repeat in autumn. 0 for a file time that means no date.
TDateTime UniversalDateTime(std::uint64_t fileTime);

// The calendar time of a date-time.
TCalendarTime ToCalendarTime(TDateTime time);
