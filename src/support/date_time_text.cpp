#include "support/date_time_text.h"

#include <windows.h>

namespace {

constexpr int kTextLength = 128;  // far more than any locale's pattern gives

}  // namespace

TDateTime CurrentDateTime() {
    SYSTEMTIME now{};
    GetLocalTime(&now);
    return ToDateTime(
        {now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond, now.wMilliseconds});
}

std::wstring DateTimeText(TDateTime time) {
    const TCalendarTime calendar = ToCalendarTime(time);
    SYSTEMTIME parts{};
    parts.wYear = static_cast<WORD>(calendar.year);
    parts.wMonth = static_cast<WORD>(calendar.month);
    parts.wDay = static_cast<WORD>(calendar.day);
    parts.wHour = static_cast<WORD>(calendar.hour);
    parts.wMinute = static_cast<WORD>(calendar.minute);
    parts.wSecond = static_cast<WORD>(calendar.second);
    wchar_t date[kTextLength] = {};
    wchar_t clock[kTextLength] = {};
    GetDateFormatEx(LOCALE_NAME_USER_DEFAULT, DATE_SHORTDATE, &parts, nullptr, date, kTextLength, nullptr);
    GetTimeFormatEx(LOCALE_NAME_USER_DEFAULT, 0, &parts, nullptr, clock, kTextLength);
    return std::wstring(date) + L" " + clock;
}
