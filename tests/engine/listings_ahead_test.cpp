// Folders that are listed ahead of their turn, on file systems in memory.
#include "engine/listings_ahead.h"

#include <gtest/gtest.h>

#include <atomic>

#include "engine/memory_files.h"
#include "engine/scan_folders.h"
#include "support/path_hash.h"

namespace {

constexpr std::size_t kFolders = 120;
constexpr DWORD kFile = FILE_ATTRIBUTE_ARCHIVE;
const std::wstring kSource = L"C:\\Daten";
const std::wstring kBackup = L"N:\\PC\\drive_C\\Daten";

std::wstring Folder(std::size_t number) {
    return L"\\" + std::to_wstring(1000 + number);
}

// The number of a folder of the backup that a path names; -1 for others.
int NumberIn(std::wstring_view path) {
    const std::size_t at = path.find(kBackup + L"\\1");
    return at == std::wstring_view::npos ? -1 : _wtoi(path.data() + at + kBackup.size() + 1) - 1000;
}

// The calls of the tests have no room for a context of their own.
DWORD scanThread = 0;
std::atomic<int> calls = 0;
std::atomic<bool> isAway = false;

BOOL WINAPI BreakOffElsewhere(HANDLE handle, WIN32_FIND_DATAW* data) {
    if (GetCurrentThreadId() != scanThread && ++calls % 5 == 0) {
        SetLastError(ERROR_PATH_NOT_FOUND);
        return FALSE;
    }
    return TMemoryFiles::Table().FindNextFileW(handle, data);
}

// A call to a NAS that hangs: it waits for bytes that never come.
HANDLE WINAPI HangElsewhere(LPCWSTR pattern, FINDEX_INFO_LEVELS level, LPVOID data, FINDEX_SEARCH_OPS search,
                            LPVOID filter, DWORD flags) {
    if (GetCurrentThreadId() == scanThread) {
        return TMemoryFiles::Table().FindFirstFileExW(pattern, level, data, search, filter, flags);
    }
    HANDLE ends[2] = {};
    char byte = 0;
    DWORD read = 0;
    CreatePipe(&ends[0], &ends[1], nullptr, 0);
    ++calls;
    ReadFile(ends[0], &byte, 1, &read, nullptr);
    CloseHandle(ends[0]);
    CloseHandle(ends[1]);
    SetLastError(ERROR_OPERATION_ABORTED);
    return INVALID_HANDLE_VALUE;
}

// The NAS goes away at folder 40, and answers for some more as if nothing had ever been there.
HANDLE WINAPI GoAway(LPCWSTR pattern, FINDEX_INFO_LEVELS level, LPVOID data, FINDEX_SEARCH_OPS search,
                     LPVOID filter, DWORD flags) {
    const int number = NumberIn(pattern);
    isAway = isAway || (number == 40 && calls++ == 0);
    if (isAway && number >= 40) {
        SetLastError(number == 40 ? ERROR_BAD_NETPATH : ERROR_PATH_NOT_FOUND);
        return INVALID_HANDLE_VALUE;
    }
    return TMemoryFiles::Table().FindFirstFileExW(pattern, level, data, search, filter, flags);
}

class ListingsAhead : public testing::Test {
protected:
    ListingsAhead() {
        CreateHashContext();
        files_.MakeCaseSensitive(kSource);
        for (std::size_t number = 0; number < kFolders; ++number) {
            files_.Add(kSource + Folder(number) + L"\\same.txt", kFile);
            files_.Add(kBackup + Folder(number) + L"\\same.txt", kFile);
            files_.Add(kSource + Folder(number) + L"\\new.txt", kFile);
        }
        calls = 0;
    }

    // What the scan sends to be copied, and the paths of its problems.
    std::vector<std::wstring> Scan(std::size_t atATime) {
        SourceFolderRow row;
        row.Aktive = row.Rekursiv = true;
        row.Directory = kSource;
        THashTable records;
        records.Open();
        const TScanParameters parameters{
            .dataSet = std::make_shared<const std::vector<SourceFolderRow>>(1, row),
            .nasData = records.Snapshot(),
            .nas = L"N:",
            .host = L"PC",
            .readAhead = {.atATime = atATime, .fromDuration = std::chrono::microseconds(0)}};
        std::vector<std::wstring> sent;
        TOmniEventMonitor monitor([] {});
        monitor.OnTaskMessage = [&sent](IOmniTask&, TTaskMessage& message) {
            if (const auto* list = std::get_if<std::unique_ptr<TStringList>>(&message.value)) {
                sent.insert(sent.end(), (*list)->begin(), (*list)->end());
            } else if (const auto* problem = std::get_if<TProblem>(&message.value)) {
                sent.push_back(L"problem " + problem->path);
            }
        };
        monitor.OnTaskTerminated = [](IOmniTask&) {};
        IOmniTaskControl control(
            [&](IOmniTask& task) {
                scanThread = GetCurrentThreadId();
                TFolderScan(task, table_, parameters).Run();
            },
            L"Scan");
        control.MonitorWith(monitor);
        control.Run();
        whileItRuns_(control);
        control.WaitFor(kUnlimitedWait);
        monitor.Deliver();
        return sent;
    }

    TMemoryFiles files_;
    TPlatformCalls table_ = TMemoryFiles::Table();
    std::function<void(IOmniTaskControl&)> whileItRuns_ = [](IOmniTaskControl&) {};
};

TEST_F(ListingsAhead, WhatIsSentComesInTheFoldersOrderHoweverLongEachTakes) {
    // Two folders with one destination, a listing that always breaks off, one too large to be read ahead.
    files_.Add(kSource + L"\\Eins\\a.txt", kFile);
    files_.Add(kSource + L"\\eins\\A.txt", kFile);
    files_.BreakListing(kBackup + Folder(50), 0);
    for (int number = 0; number < 5000; ++number) {
        files_.Add(kSource + Folder(70) + L"\\f" + std::to_wstring(number), kFile);
        files_.Add(kBackup + Folder(70) + L"\\f" + std::to_wstring(number), kFile);
    }
    files_.Add(kSource + Folder(70) + L"\\last", kFile);
    const auto inTurn = Scan(1);
    ASSERT_EQ(inTurn.size(), kFolders + 3);
    EXPECT_EQ(inTurn.back(), L"problem " + kSource + L"\\eins\\A.txt");

    std::atomic<int> underWay = 0;
    std::atomic<int> most = 0;
    files_.beforeListing = [&](std::wstring_view folder) {
        if (const int number = NumberIn(folder); number >= 0) {
            const int now = ++underWay;
            for (int seen = most; now > seen && !most.compare_exchange_weak(seen, now);) {
            }
            Sleep(static_cast<DWORD>(number * 7 % 13));
            --underWay;
        }
    };
    EXPECT_EQ(Scan(8), inTurn);
    EXPECT_GT(most, 4);
    EXPECT_LE(most, 8);
}

TEST_F(ListingsAhead, AListingThatBreaksOffAheadIsMadeAnewInItsTurn) {
    const auto inTurn = Scan(1);
    table_.FindNextFileW = &BreakOffElsewhere;
    EXPECT_EQ(Scan(8), inTurn);
    EXPECT_GT(calls, 100);
}

TEST_F(ListingsAhead, WhatWasReadWhileTheDestinationWasAwayIsForgotten) {
    const auto inTurn = Scan(1);
    table_.FindFirstFileExW = &GoAway;
    table_.GetFileAttributesExW = [](LPCWSTR path, GET_FILEEX_INFO_LEVELS level, LPVOID data) -> BOOL {
        if (isAway && std::wstring_view(path).find(L"N:") != std::wstring_view::npos) {
            SetLastError(ERROR_BAD_NETPATH);
            return FALSE;
        }
        return TMemoryFiles::Table().GetFileAttributesExW(path, level, data);
    };
    table_.Sleep = [](DWORD) { isAway = false; };
    EXPECT_EQ(Scan(8), inTurn);
    EXPECT_GT(calls, 1) << "folder 40 was listed once more";
}

TEST_F(ListingsAhead, AStopDoesNotWaitForListingsThatHang) {
    table_.FindFirstFileExW = &HangElsewhere;
    whileItRuns_ = [](IOmniTaskControl& control) {
        while (calls < 8) {
            Sleep(1);
        }
        const auto begun = std::chrono::steady_clock::now();
        EXPECT_TRUE(control.Terminate(60'000));
        EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(2));
    };
    EXPECT_EQ(Scan(8).size(), 1U) << "the top and one folder were listed in their turn";
    EXPECT_EQ(calls, 8);
}

}  // namespace
