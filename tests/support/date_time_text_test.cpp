#include "support/date_time_text.h"

#include <gtest/gtest.h>
#include <windows.h>

namespace {

TEST(DateTimeText, IsShortDateBlankLongTime) {
    wchar_t locale[LOCALE_NAME_MAX_LENGTH] = {};
    GetUserDefaultLocaleName(locale, LOCALE_NAME_MAX_LENGTH);
    const std::wstring text = DateTimeText(ToDateTime({2024, 12, 24, 18, 5, 9, 999}));
    if (locale == std::wstring_view(L"de-DE")) {
        EXPECT_EQ(text, L"24.12.2024 18:05:09");
    } else if (locale == std::wstring_view(L"en-US")) {
        EXPECT_EQ(text, L"12/24/2024 6:05:09 PM");
    } else {
        GTEST_SKIP() << "no known pattern for this user's language";
    }
}

TEST(DateTimeText, CurrentDateTimeIsLocal) {
    SYSTEMTIME before{};
    GetLocalTime(&before);
    const TDateTime now = CurrentDateTime();
    const TDateTime earlier = ToDateTime({before.wYear, before.wMonth, before.wDay, before.wHour,
                                          before.wMinute, before.wSecond, before.wMilliseconds});
    EXPECT_GE(now, earlier);
    EXPECT_LT(now.milliseconds - earlier.milliseconds, 60'000);
}

}  // namespace
