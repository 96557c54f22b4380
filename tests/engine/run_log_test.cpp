#include "engine/run_log.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "engine/run_log_name.h"
#include "support/date_time_text.h"
#include "test_folder.h"
#include "watched_calls.h"

namespace {

const TDateTime kStart = ToDateTime({2026, 11, 23, 20, 0, 0});

std::size_t LinesIn(const std::string& text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

TEST(RunLog, CanBeReadWhileTheRunGoesOnAndAfterItWasKilled) {
    const TTestFolder folder;
    {
        TRunLog log(SystemPlatformCalls(), folder.Path());
        log.Begin(kStart);
        log.Destination(L"N:\\PC");
        log.SourceFolder(L"C:\\Bücher", 12);
        log.Problem(
            {.what = TProblemKind::CopyFailed, .path = L"C:\\Bücher\\a", .code = ERROR_SHARING_VIOLATION});
        log.Note(L"in\r\nder Mitte");
        const std::string text = ContentOf(log.Path());
        EXPECT_EQ(LinesIn(text), 6U) << text;
        EXPECT_NE(text.find("  Quellordner: C:\\B\xC3\xBC"
                            "cher (12 Dateien verglichen)\r\n"),
                  std::string::npos);
        EXPECT_NE(text.find("  Nicht kopiert: C:\\B\xC3\xBC"
                            "cher\\a: "),
                  std::string::npos);
        EXPECT_NE(text.find(" [Code 32]\r\n"), std::string::npos);
        EXPECT_NE(text.find("  in der Mitte\r\n"), std::string::npos);
        EXPECT_EQ(text.find("Ergebnis"), std::string::npos);
        log.End({.exitCode = 1});
        EXPECT_NE(ContentOf(log.Path()).find("Ergebnis: 1. "), std::string::npos);
        EXPECT_EQ(log.Path(), NewestRunLog(SystemPlatformCalls(), folder.Path()));
        EXPECT_EQ(log.Error(), ERROR_SUCCESS);
    }
    EXPECT_EQ(folder.FileCount(), 1U);
}

TEST(RunLog, KeepsTheLastThirtyAndWhateverIsNotItsOwn) {
    const TTestFolder folder;
    folder.Write(L"Log\\Notizen.txt", "mine");
    folder.Write(L"Log\\2020-01-01 00-00-00.txt\\a.txt", "a folder of such a name");
    for (int run = 0; run < 35; ++run) {
        folder.Write(L"Log\\" + RunLogName({kStart.milliseconds - (run + 1) * kMillisecondsPerDay}), "old");
    }
    TRunLog first(SystemPlatformCalls(), folder.Path());
    first.Begin(kStart);
    TRunLog second(SystemPlatformCalls(), folder.Path());  // in the same second, the first still open
    second.Begin(kStart);
    EXPECT_LT(first.Path(), second.Path());
    EXPECT_EQ(folder.FileCount(), 30U + 2U);
    EXPECT_FALSE(
        FileExists(SystemPlatformCalls(),
                   folder.At(L"Log\\" + RunLogName({kStart.milliseconds - 29 * kMillisecondsPerDay}))));
    // The clock was set back: the log is the oldest, and stays.
    TRunLog back(SystemPlatformCalls(), folder.Path());
    back.Begin({kStart.milliseconds - 1000 * kMillisecondsPerDay});
    EXPECT_TRUE(FileExists(SystemPlatformCalls(), back.Path()));
    EXPECT_EQ(folder.FileCount(), 30U + 2U);
}

TEST(RunLog, DoesNoHarmWhereItCannotBeWritten) {
    const TTestFolder folder;
    const auto useOne = [&](std::wstring_view configuration) {
        TRunLog log(TWatchedCalls::Table(), configuration);
        log.Note(L"before the beginning");
        log.Begin(kStart);
        log.Problem({.what = TProblemKind::DestinationMissing, .path = L"N:"});
        log.End({});
        return log.Error();
    };
    for (const char* failing : {"CreateDirectory", "CreateFile", "FindFirstFileEx", "WriteFile"}) {
        folder.Clear();
        const TWatchedCalls calls([&](const char* call, std::wstring_view) -> DWORD {
            return std::string_view(call) == failing ? ERROR_DISK_FULL : ERROR_SUCCESS;
        });
        const bool isLogLost = std::string_view(failing) != "FindFirstFileEx";
        EXPECT_EQ(useOne(folder.Path()) != ERROR_SUCCESS, isLogLost) << failing;
    }
    folder.Clear();
    folder.Write(L"Log", "a file in the way");
    EXPECT_NE(useOne(folder.Path()), ERROR_SUCCESS);
    EXPECT_NE(useOne(L""), ERROR_SUCCESS);
    EXPECT_EQ(NewestRunLog(SystemPlatformCalls(), folder.Path()), L"");
    EXPECT_EQ(NewestRunLog(SystemPlatformCalls(), L""), L"");
}

}  // namespace
