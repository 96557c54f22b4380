#include "support/file_times.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "test_folder.h"

namespace {

FILETIME ToFileTime(std::uint64_t value) {
    return {static_cast<DWORD>(value), static_cast<DWORD>(value >> 32)};
}

std::uint64_t ToValue(const FILETIME& time) {
    return static_cast<std::uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

// A UTC time, plus a part of a millisecond that nobody shall see.
FILETIME Utc(WORD year, WORD month, WORD day, WORD hour, WORD minute, WORD second, WORD millisecond = 0) {
    const SYSTEMTIME parts{year, month, 0, day, hour, minute, second, millisecond};
    FILETIME time{};
    SystemTimeToFileTime(&parts, &time);
    return ToFileTime(ToValue(time) + 9999);
}

// One hour ahead of UTC, two in summer: from the last Sunday in March, 2:00, to the last in October, 3:00.
TIME_ZONE_INFORMATION CentralEurope() {
    TIME_ZONE_INFORMATION zone{};
    zone.Bias = -60;
    zone.DaylightBias = -60;
    zone.DaylightDate = {0, 3, 0, 5, 2, 0, 0, 0};
    zone.StandardDate = {0, 10, 0, 5, 3, 0, 0, 0};
    return zone;
}

void ExpectCentralEuropeanTimes(const TLocalTimeRule& rule) {
    EXPECT_EQ(rule.ToLocal(Utc(2024, 1, 15, 12, 0, 0, 7)), ToDateTime({2024, 1, 15, 13, 0, 0, 7}));
    EXPECT_EQ(rule.ToLocal(Utc(2024, 7, 15, 12, 0, 0, 7)), ToDateTime({2024, 7, 15, 14, 0, 0, 7}));
    EXPECT_EQ(rule.ToLocal(Utc(2024, 3, 31, 0, 59, 59, 999)), ToDateTime({2024, 3, 31, 1, 59, 59, 999}));
    EXPECT_EQ(rule.ToLocal(Utc(2024, 3, 31, 1, 0, 0)), ToDateTime({2024, 3, 31, 3}));
    EXPECT_EQ(rule.ToLocal(Utc(2024, 10, 27, 0, 59, 59, 999)), ToDateTime({2024, 10, 27, 2, 59, 59, 999}));
    EXPECT_EQ(rule.ToLocal(Utc(2024, 10, 27, 1, 0, 0)), ToDateTime({2024, 10, 27, 2}));
    // Over the end of the year, and of another year.
    EXPECT_EQ(rule.ToLocal(Utc(1999, 12, 31, 23, 30, 0)), ToDateTime({2000, 1, 1, 0, 30}));
    EXPECT_EQ(rule.ToLocal(Utc(1999, 10, 31, 0, 30, 0)), ToDateTime({1999, 10, 31, 2, 30}));
}

TEST(FileTimes, EachTimeConvertsByTheRuleForItsOwnDate) {
    ExpectCentralEuropeanTimes(TLocalTimeRule(CentralEurope()));
}

TEST(FileTimes, MachineInCentralEuropeHasThatRule) {
    TIME_ZONE_INFORMATION zone{};
    GetTimeZoneInformation(&zone);
    if (zone.Bias != -60 || zone.StandardDate.wMonth != 10) {
        GTEST_SKIP() << "needs TZ=Europe/Berlin";
    }
    ExpectCentralEuropeanTimes(TLocalTimeRule());
}

TEST(FileTimes, TimesWithoutADateAreUnknown) {
    EXPECT_EQ(TLocalTimeRule().ToLocal(ToFileTime(0x8000000000000000)), TDateTime{});
    EXPECT_EQ(TLocalTimeRule().ToLocal(ToFileTime(0xFFFFFFFFFFFFFFFF)), TDateTime{});
}

TEST(FileTimes, MachinesRuleIsTheOneOfTheSystem) {
    const FILETIME time = Utc(2024, 7, 15, 12, 0, 0);
    SYSTEMTIME universal{};
    SYSTEMTIME local{};
    FileTimeToSystemTime(&time, &universal);
    SystemTimeToTzSpecificLocalTime(nullptr, &universal, &local);
    EXPECT_EQ(TLocalTimeRule().ToLocal(time),
              ToDateTime({local.wYear, local.wMonth, local.wDay, local.wHour, local.wMinute, local.wSecond}));
}

TEST(FileTimes, AreTakenOverToTheLastDigit) {
    const TPlatformCalls& calls = SystemPlatformCalls();
    const TTestFolder folder;
    const std::wstring file = folder.Write(L"\u4E2D\u6587.txt", "x");
    const TFileTimes wanted{Utc(2001, 2, 3, 4, 5, 6), Utc(2011, 12, 13, 14, 15, 16),
                            ToFileTime(ToValue(Utc(2021, 7, 8, 9, 10, 11, 123)) - 4567)};
    ASSERT_TRUE(WriteFileTimes(calls, file, wanted));
    const auto read = ReadFileTimes(calls, file);
    ASSERT_TRUE(read);
    EXPECT_EQ(ToValue(read->lastWrite), ToValue(wanted.lastWrite));
    EXPECT_EQ(ToValue(read->lastAccess), ToValue(wanted.lastAccess));
    EXPECT_EQ(LastWriteDateTime(calls, TLocalTimeRule(CentralEurope()), file),
              ToDateTime({2021, 7, 8, 11, 10, 11, 123}));
}

TEST(FileTimes, AllThreeTimesReachTheSystemInTheirOrder) {
    static TFileTimes given;
    static int closed;
    closed = 0;
    TPlatformCalls calls = SystemPlatformCalls();
    calls.CreateFileW = [](const wchar_t*, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD disposition, DWORD,
                           HANDLE) -> HANDLE {
        return disposition == OPEN_EXISTING ? reinterpret_cast<HANDLE>(1) : INVALID_HANDLE_VALUE;
    };
    calls.SetFileTime = [](HANDLE, const FILETIME* creation, const FILETIME* access, const FILETIME* write) {
        given = {*creation, *access, *write};
        return FALSE;
    };
    calls.CloseHandle = [](HANDLE) { return ++closed != 0 ? TRUE : FALSE; };
    EXPECT_FALSE(WriteFileTimes(calls, L"C:\\a", {ToFileTime(1), ToFileTime(2), ToFileTime(3)}));
    EXPECT_EQ(ToValue(given.creation), 1u);
    EXPECT_EQ(ToValue(given.lastAccess), 2u);
    EXPECT_EQ(ToValue(given.lastWrite), 3u);
    EXPECT_EQ(closed, 1);
}

TEST(FileTimes, MissingFileHasNone) {
    const TPlatformCalls& calls = SystemPlatformCalls();
    const TTestFolder folder;
    EXPECT_FALSE(ReadFileTimes(calls, folder.At(L"missing")));
    EXPECT_FALSE(WriteFileTimes(calls, folder.At(L"missing"), {}));
    EXPECT_FALSE(FileExists(calls, folder.At(L"missing")));
    EXPECT_EQ(LastWriteDateTime(calls, TLocalTimeRule(), folder.At(L"missing")), TDateTime{});
}

}  // namespace
