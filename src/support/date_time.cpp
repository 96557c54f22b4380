#include "support/date_time.h"

#include <chrono>

namespace {

using namespace std::chrono;

constexpr sys_days kDayZero = 1899y / December / 30;

}  // namespace

TDateTime ToDateTime(const TCalendarTime& time) {
    // The calendar's own types are narrower than int and would take a month 257 for January.
    if (time.year < 1 || time.year > static_cast<int>(year::max()) || time.month < 1 || time.month > 12 ||
        time.day < 1 || time.day > 31) {
        return {};
    }
    const year_month_day date{year{time.year}, month{static_cast<unsigned>(time.month)},
                              day{static_cast<unsigned>(time.day)}};
    const bool clockIsValid = time.hour >= 0 && time.hour < 24 && time.minute >= 0 && time.minute < 60 &&
                              time.second >= 0 && time.second < 60 && time.millisecond >= 0 &&
                              time.millisecond < 1000;
    if (!date.ok() || !clockIsValid) {
        return {};
    }
    const auto sinceMidnight =
        hours{time.hour} + minutes{time.minute} + seconds{time.second} + milliseconds{time.millisecond};
    return {duration_cast<milliseconds>(sys_days{date} - kDayZero + sinceMidnight).count()};
}

TDateTime UniversalDateTime(std::uint64_t fileTime) {
    constexpr std::uint64_t kFirstWithoutDate = 0x8000'0000'0000'0000;
    constexpr std::uint64_t kTicksPerMillisecond = 10'000;
    if (fileTime >= kFirstWithoutDate) {
        return {};
    }
    const auto since1601 = milliseconds(fileTime / kTicksPerMillisecond);
    return {duration_cast<milliseconds>(sys_days{1601y / January / 1} - kDayZero + since1601).count()};
}

TCalendarTime ToCalendarTime(TDateTime time) {
    const auto moment = kDayZero + milliseconds{time.milliseconds};
    const auto midnight = floor<days>(moment);
    const year_month_day date{midnight};
    const hh_mm_ss clock{moment - midnight};
    return {static_cast<int>(date.year()),
            static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day())),
            static_cast<int>(clock.hours().count()),
            static_cast<int>(clock.minutes().count()),
            static_cast<int>(clock.seconds().count()),
            static_cast<int>(clock.subseconds().count())};
}
