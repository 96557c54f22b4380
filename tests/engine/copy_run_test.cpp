// Whole runs of the engine on real folders.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <vector>

#include "engine/copy_run_fixture.h"
#include "support/path_hash.h"

namespace {

TEST_F(CopyRun, CopiesOnceAndThenOnlyWhatChanged) {
    source_.Write(L"a.txt", "one", TestTime(0));
    source_.Write(L"sub\\ä€.txt", "two", TestTime(1));
    source_.Write(L"sub\\.cache\\left out.txt", "dot", TestTime(1));
    AddSource(source_.Path() + L"\\");
    Run();
    EXPECT_EQ(destination_.Read(CopyOf(L"a.txt")), "one");
    EXPECT_EQ(destination_.Read(CopyOf(L"sub\\ä€.txt")), "two");
    EXPECT_EQ(Texts(TMessagePos::Memo), (std::vector{source_.At(L"a.txt"), source_.At(L"sub\\ä€.txt")}));
    EXPECT_EQ(Texts(TMessagePos::Bytes), (std::vector<std::wstring>{L"3 B", L"6 B"}));
    EXPECT_EQ(Texts(TMessagePos::FileMsg), (std::vector<std::wstring>{L"a.txt", L"ä€.txt"}));
    EXPECT_EQ(Texts(TMessagePos::Ignore),
              std::vector<std::wstring>{L"Dateivergleich mit 2 Dateien abgeschlossen"});
    EXPECT_EQ(destination_.Read(HostName() + L"\\Vardeko.dat")->size(), 42 + 78 * 2);
    const auto times = ReadFileTimes(SystemPlatformCalls(), destination_.At(CopyOf(L"a.txt")));
    EXPECT_EQ(CompareFileTime(&times->lastWrite, &*std::make_unique<FILETIME>(TestTime(0))), 0);

    Run();
    EXPECT_TRUE(Texts(TMessagePos::Memo).empty()) << "nothing has changed";

    source_.Write(L"a.txt", "changed", TestTime(1));
    source_.Write(L"new.txt", "three", TestTime(0));
    Run();
    auto copied = Texts(TMessagePos::Memo);
    std::ranges::sort(copied);
    EXPECT_EQ(copied, (std::vector{source_.At(L"a.txt"), source_.At(L"new.txt")}));
    EXPECT_EQ(destination_.Read(CopyOf(L"a.txt")), "changed");
    EXPECT_EQ(destination_.FileCount(), 4U) << "three copies and the table, nothing beside them";
}

TEST_F(CopyRun, TheLastRowsFilterRulesAllFolders) {
    source_.Write(L"a\\x.doc", "1");
    source_.Write(L"a\\y.jpg", "2");
    source_.Write(L"b\\z.txt", "3");
    AddSource(source_.At(L"a"));
    Dm().MemData.Edit();
    Dm().MemData.Working().Extensions = L".doc";
    Dm().MemData.Working().ExtensionMode = L"IN";
    Dm().MemData.Post();
    AddSource(source_.At(L"b"));
    AddSource(source_.At(L"missing"));
    Run();
    EXPECT_EQ(Texts(TMessagePos::Memo).size(), 3U);
    EXPECT_TRUE(Texts(TMessagePos::Error).empty()) << "a missing source folder stays silent";
}

TEST_F(CopyRun, HistoryOfTheCurrentRowKeepsEarlierCopies) {
    source_.Write(L"report.txt", "new", TestTime(5));
    destination_.Write(CopyOf(L"report.txt"), "old", TestTime(1));
    destination_.Write(CopyOf(L"report #001.txt"), "older", TestTime(0));
    AddSource(source_.Path());
    Dm().MemData.Edit();
    Dm().MemData.Working().History = true;
    Dm().MemData.Post();
    Run();
    EXPECT_EQ(destination_.Read(CopyOf(L"report.txt")), "new");
    EXPECT_EQ(destination_.Read(CopyOf(L"report #001.txt")), "older");
    EXPECT_EQ(destination_.Read(CopyOf(L"report #002.txt")), "old");
}

TEST_F(CopyRun, LongPathsAreCopiedUnderTheirPlainHash) {
    const std::wstring name(80, L'n');
    std::wstring relative = L"deep";
    for (int level = 0; level < 5; ++level) {
        relative += L"\\" + name;
    }
    relative += L"\\file.txt";
    source_.Write(relative, "deep", TestTime(0));
    AddSource(source_.Path());
    Run();
    EXPECT_EQ(destination_.Read(CopyOf(relative)), "deep");
    EXPECT_TRUE(Dm().NasData.Find(PathDigest(source_.At(relative))).has_value());
    Run();
    EXPECT_TRUE(Texts(TMessagePos::Memo).empty());
}

TEST_F(CopyRun, AFailedCopyIsToldLoggedAndLeavesTheOldOne) {
    source_.Write(L"a.txt", "new", TestTime(5));
    source_.Write(L"b.txt", "b", TestTime(5));
    destination_.Write(CopyOf(L"a.txt"), "old", TestTime(1));
    calls_.CopyFileExW = [](LPCWSTR from, LPCWSTR to, LPPROGRESS_ROUTINE routine, LPVOID data, LPBOOL cancel,
                            DWORD flags) -> BOOL {
        if (std::wstring_view(from).ends_with(L"a.txt")) {
            std::ofstream(std::filesystem::path(to), std::ios::binary) << "hal";
            SetLastError(ERROR_DISK_FULL);
            return FALSE;
        }
        return ::CopyFileExW(from, to, routine, data, cancel, flags);
    };
    AddSource(source_.Path());
    Run();
    EXPECT_EQ(Texts(TMessagePos::Error), std::vector{source_.At(L"a.txt")});
    EXPECT_EQ(Texts(TMessagePos::Memo), std::vector{source_.At(L"b.txt")});
    EXPECT_EQ(Dm().Failures().Sum(), 1U);
    EXPECT_EQ(destination_.Read(CopyOf(L"a.txt")), "old");
    EXPECT_FALSE(Dm().NasData.Find(PathDigest(source_.At(L"a.txt"))));
    const std::string log = destination_.Read(HostName() + L"\\Error.log").value_or("");
    EXPECT_TRUE(log.starts_with("[") &&
                log.ends_with("] " + ToUtf8(source_.At(L"a.txt")) + " Copy Error\r\n"))
        << log;
    EXPECT_EQ(destination_.FileCount(), 4U) << "two copies, table and log: no half file";
}

// Sends what CopyFileExW documents for a large file, one chunk a call, until it is stopped.
BOOL WINAPI CopyWithProgress(LPCWSTR, LPCWSTR, LPPROGRESS_ROUTINE routine, LPVOID data, LPBOOL, DWORD) {
    LARGE_INTEGER total{};
    total.QuadPart = 5'000'000'000;
    LARGE_INTEGER done{};
    DWORD answer = routine(total, done, total, done, 1, CALLBACK_STREAM_SWITCH, nullptr, nullptr, data);
    while (answer == PROGRESS_CONTINUE && done.QuadPart < total.QuadPart) {
        done.QuadPart += 1'250'000'000;
        answer = routine(total, done, total, done, 1, CALLBACK_CHUNK_FINISHED, nullptr, nullptr, data);
    }
    SetLastError(ERROR_REQUEST_ABORTED);
    return FALSE;
}

TEST_F(CopyRun, LargeFilesTellTheirProgressAndCanBeStopped) {
    const std::wstring large = source_.WriteZeros(L"large.bin", 67'108'864);
    const std::wstring small = source_.Write(L"small.txt", "x");
    std::vector<std::pair<UINT, std::uint64_t>> messages;
    std::size_t told = 0;
    const TMessageWindow window([&](UINT message, WPARAM low, LPARAM high) -> std::optional<LRESULT> {
        if (message < kProgressResetMessage || message > kProgressMaximumMessage) {
            return std::nullopt;
        }
        messages.emplace_back(message, static_cast<std::uint64_t>(high) << 32 | low);
        if (messages.size() == 3) {
            // The small one is copied by now, and waits for its turn to be told.
            for (int step = 0; step < 5000 && !destination_.Read(CopyOf(L"small.txt")); ++step) {
                Sleep(1);
            }
            EndRun();
            told = reports_.size();
        }
        return 0;
    });
    calls_.CopyFileExW = [](LPCWSTR from, LPCWSTR to, LPPROGRESS_ROUTINE routine, LPVOID data, LPBOOL cancel,
                            DWORD flags) -> BOOL {
        const auto copy = routine != nullptr ? &CopyWithProgress : &::CopyFileExW;
        return copy(from, to, routine, data, cancel, flags);
    };
    AddSource(source_.Path());
    Dm().myHandle = window.Handle();
    Run();
    EXPECT_EQ(messages,
              (std::vector<std::pair<UINT, std::uint64_t>>{{kProgressMaximumMessage, 5'000'000'000},
                                                           {kProgressPositionMessage, 1'250'000'000},
                                                           {kProgressPositionMessage, 2'500'000'000},
                                                           {kProgressResetMessage, 0}}));
    EXPECT_EQ(Texts(TMessagePos::Error), std::vector{large});
    EXPECT_EQ(Texts(TMessagePos::Memo), std::vector{small});
    EXPECT_EQ(reports_.size(), told) << "nothing is told after the end of the run";
    EXPECT_FALSE(finished_);
}

TEST_F(CopyRun, OneByteBelowTheThresholdIsCopiedWithoutProgress) {
    source_.WriteZeros(L"small.bin", 67'108'863);
    calls_.CopyFileExW = [](LPCWSTR from, LPCWSTR to, LPPROGRESS_ROUTINE routine, LPVOID data, LPBOOL cancel,
                            DWORD flags) -> BOOL {
        EXPECT_EQ(routine, nullptr);
        EXPECT_EQ(data, nullptr);
        EXPECT_EQ(flags, 4U);
        return ::CopyFileExW(from, to, routine, data, cancel, flags);
    };
    AddSource(source_.Path());
    Run();
    EXPECT_EQ(Texts(TMessagePos::Memo).size(), 1U);
}

TEST_F(CopyRun, WhatPreventsARunIsToldAndTouchesNothing) {
    AddSource(source_.Path());
    source_.Write(L"a.txt", "x");

    WriteSettings("NASDIR=" + ToUtf8(destination_.At(L"gone")) + "\r\n");
    onEnd_ = [] { EXPECT_FALSE(CopyIdle) << "the window keeps its running state until the user stops"; };
    Run();
    EXPECT_EQ(Texts(TMessagePos::Memo),
              std::vector{L"Error: Destination Directory does not exist, " + Dm().NAS});
    EXPECT_NE(reports_.back().reason, L"") << "and says why";

    std::filesystem::remove(configuration_ + L"\\NASConf.ini");
    Run();
    onEnd_ = nullptr;
    EXPECT_EQ(Texts(TMessagePos::Memo),
              std::vector<std::wstring>{L"Error: Destination Directory does not exist, "});

    WriteSettings("NASDIR=" + ToUtf8(destination_.Path()) +
                  "\r\nCONNECT=1\r\nUSER=AAAAAAAAAAAAAAAAAAAAAA==\r\n");
    Run();
    ASSERT_EQ(Texts(TMessagePos::Error).size(), 1U);
    EXPECT_NE(Texts(TMessagePos::Error).front().find(L"NTE_BAD_DATA"), std::wstring::npos);
    EXPECT_TRUE(finished_) << "an unattended program must come to its end";
    EXPECT_EQ(destination_.FileCount(), 0U);
}

TEST_F(CopyRun, ATableOfAnotherVersionStopsTheRunAndADamagedOneDoesNot) {
    source_.Write(L"a.txt", "x");
    const std::wstring table = HostName() + L"\\Vardeko.dat";
    destination_.Write(table, "Ver, but nothing behind it");
    AddSource(source_.Path());
    Run();
    ASSERT_EQ(Texts(TMessagePos::Error).size(), 1U);
    EXPECT_NE(Texts(TMessagePos::Error).front().find(L"Vardeko.dat"), std::wstring::npos)
        << ToUtf8(Texts(TMessagePos::Error).front());
    EXPECT_EQ(destination_.Read(table), "Ver, but nothing behind it");
    EXPECT_EQ(destination_.FileCount(), 1U);

    destination_.Write(table, "power was cut");
    Run();
    ASSERT_EQ(Texts(TMessagePos::Error).size(), 1U);
    EXPECT_EQ(Dm().ExitCode(), TExitCode::NotAllCopied);
    EXPECT_EQ(destination_.Read(HostName() + L"\\Vardeko #001.dat"), "power was cut");
    EXPECT_EQ(destination_.Read(CopyOf(L"a.txt")), "x");
    Run();
    EXPECT_EQ(Dm().ExitCode(), TExitCode::AllCopied) << "told once";
    EXPECT_TRUE(Texts(TMessagePos::Memo).empty());
}

TEST_F(CopyRun, ADestinationThatLostItsTableIsToldOnceAndFilledAgain) {
    source_.Write(L"a.txt", "x", TestTime(0));
    AddSource(source_.Path());
    Run();
    // As a mount point without its disk, or another disk, looks.
    destination_.Clear();
    Run();
    ASSERT_EQ(Texts(TMessagePos::Error).size(), 1U);
    EXPECT_NE(Texts(TMessagePos::Error).front().find(L"Vardeko.dat\" fehlt"), std::wstring::npos);
    EXPECT_EQ(Dm().ExitCode(), TExitCode::NotAllCopied);
    EXPECT_EQ(destination_.Read(CopyOf(L"a.txt")), "x");
    Run();
    EXPECT_EQ(Dm().ExitCode(), TExitCode::AllCopied);
}

TEST_F(CopyRun, AnUnattendedRunWaitsForADestinationThatWakesUp) {
    source_.Write(L"a.txt", "x");
    AddSource(source_.Path());
    UseMovedClock(calls_);
    const std::wstring away = destination_.Path() + L" away";
    MoveFileW(destination_.Path().c_str(), away.c_str());
    const ULONGLONG begun = clockNow;
    onSleep = [&] {
        if (clockNow - begun == 30'000) {
            MoveFileW(away.c_str(), destination_.Path().c_str());
        }
    };
    Dm().SetUnattended(true);
    Run();
    EXPECT_EQ(Dm().ExitCode(), TExitCode::AllCopied);
    EXPECT_EQ(Texts(TMessagePos::Status).front(), L"Warte auf das Ziel: " + Dm().NAS);

    MoveFileW(destination_.Path().c_str(), away.c_str());
    onSleep = nullptr;
    Run();
    EXPECT_EQ(Texts(TMessagePos::Memo),
              std::vector{L"Error: Destination Directory does not exist, " + Dm().NAS});
    MoveFileW(away.c_str(), destination_.Path().c_str());
}

TEST_F(CopyRun, ADropOutOfSomeSecondsPausesTheRun) {
    source_.Write(L"a.txt", "x", TestTime(0));
    source_.Write(L"b.txt", "y", TestTime(0));
    AddSource(source_.Path());
    UseMovedClock(calls_);
    static std::wstring here;
    here = destination_.Path();
    calls_.CopyFileExW = [](LPCWSTR from, LPCWSTR to, LPPROGRESS_ROUTINE routine, LPVOID data, LPBOOL cancel,
                            DWORD flags) WINAPI -> BOOL {
        if (std::wstring_view(from).ends_with(L"a.txt") && clockNow % 2 == 0) {
            MoveFileW(here.c_str(), (here + L" away").c_str());
        }
        return ::CopyFileExW(from, to, routine, data, cancel, flags);
    };
    clockNow = 0;
    onSleep = [] {
        if (clockNow >= 20'000) {
            clockNow |= 1;
            MoveFileW((here + L" away").c_str(), here.c_str());
        }
    };
    Run();
    onSleep = nullptr;
    EXPECT_EQ(Dm().ExitCode(), TExitCode::AllCopied);
    EXPECT_EQ(destination_.Read(CopyOf(L"a.txt")), "x");
    EXPECT_EQ(destination_.Read(CopyOf(L"b.txt")), "y");
    EXPECT_TRUE(Texts(TMessagePos::Error).empty());
}

TEST_F(CopyRun, ASecondRunOnTheSameDestinationWaitsForTheFirst) {
    source_.Write(L"a.txt", "x", TestTime(0));
    AddSource(source_.Path());
    Run();
    auto claim = TDestinationClaim::Take({.nas = Dm().NAS, .host = HostName()});
    ASSERT_TRUE(claim);
    UseMovedClock(calls_);
    onSleep = [&, begun = clockNow.load()] {
        if (clockNow - begun >= 600'000) {
            claim.reset();
        }
    };
    source_.Write(L"b.txt", "y", TestTime(0));
    Run();
    onSleep = nullptr;
    EXPECT_EQ(Dm().ExitCode(), TExitCode::AllCopied);
    EXPECT_EQ(Texts(TMessagePos::Memo).size(), 1U);
    EXPECT_NE(Texts(TMessagePos::Status).front().find(Dm().NAS), std::wstring::npos);
}

TEST_F(CopyRun, WhatFailedIsTriedOnceMoreAtTheEnd) {
    source_.Write(L"a.txt", "x", TestTime(0));
    source_.Write(L"b.txt", "y", TestTime(0));
    static int failures;
    failures = 1;
    calls_.CopyFileExW = [](LPCWSTR from, LPCWSTR to, LPPROGRESS_ROUTINE routine, LPVOID data, LPBOOL cancel,
                            DWORD flags) WINAPI -> BOOL {
        if (std::wstring_view(from).ends_with(L"a.txt") && failures-- > 0) {
            SetLastError(ERROR_DISK_FULL);
            return FALSE;
        }
        return ::CopyFileExW(from, to, routine, data, cancel, flags);
    };
    AddSource(source_.Path());
    Run();
    EXPECT_EQ(Texts(TMessagePos::Error), std::vector{source_.At(L"a.txt")});
    EXPECT_EQ(Texts(TMessagePos::Memo), (std::vector{source_.At(L"b.txt"), source_.At(L"a.txt")}));
    EXPECT_EQ(Dm().ExitCode(), TExitCode::AllCopied);
}

TEST_F(CopyRun, StopAndStartFromWithinAnyReportAreSafe) {
    AddSource(source_.Path());
    UseMovedClock(calls_);
    calls_.CopyFileExW = [](LPCWSTR from, LPCWSTR to, LPPROGRESS_ROUTINE routine, LPVOID data, LPBOOL cancel,
                            DWORD flags) WINAPI -> BOOL {
        SetLastError(ERROR_DISK_FULL);
        return !std::wstring_view(from).ends_with(L"fails") &&
               ::CopyFileExW(from, to, routine, data, cancel, flags);
    };
    source_.Write(L"fails", "x", TestTime(0));
    std::size_t runs = 0;
    for (bool restarted = true; restarted && !HasFailure(); ++runs) {
        for (const wchar_t* name : {L"a", L"b", L"z"}) {
            source_.Write(name + std::to_wstring(runs), "x", TestTime(0));
        }
        restarted = false;
        std::size_t reports = 0;
        onReport_ = [&](const TReport&) {
            if (!restarted && !CopyIdle && reports++ == runs) {
                restarted = true;
                EndRun();
                Dm().StartCopy();
                Dm().CopyTimerTimer();
            }
        };
        Run();
        EXPECT_TRUE(finished_) << "at report " << runs;
        EXPECT_EQ(destination_.FileCount(), 3 * runs + 5) << runs << ": with the table and Error.log";
        EXPECT_EQ(destination_.Read(HostName() + L"\\Vardeko.dat")->size(), 42U + 78 * (3 * runs + 3))
            << runs;
    }
    EXPECT_GT(runs, 15U);
}

// Calls to a NAS that hangs: one that waits for bytes which never come, and one that nothing ends.
HANDLE silentPipe = nullptr;
HANDLE waitedFor = nullptr;
DWORD windowThread = 0;
std::atomic<int> stuckCalls = 0;
std::atomic<int> freedCalls = 0;
std::atomic<DWORD> freedBy = 0;

BOOL WINAPI HangOnce(LPCWSTR path, GET_FILEEX_INFO_LEVELS level, LPVOID data) {
    if (GetCurrentThreadId() != windowThread && stuckCalls++ == 0) {
        char byte = 0;
        DWORD read = 0;
        if (waitedFor != nullptr) {
            WaitForSingleObject(waitedFor, INFINITE);
        } else if (!ReadFile(silentPipe, &byte, 1, &read, nullptr)) {
            freedBy = GetLastError();
        }
        ++freedCalls;
        SetLastError(ERROR_OPERATION_ABORTED);
        return FALSE;
    }
    return GetFileAttributesExW(path, level, data);
}

TEST_F(CopyRun, AStopIsAnsweredAlsoWhileTheDestinationHangs) {
    source_.Write(L"a.txt", "content");
    AddSource(source_.Path());
    calls_.GetFileAttributesExW = &HangOnce;
    windowThread = GetCurrentThreadId();
    HANDLE otherEnd = nullptr;
    ASSERT_TRUE(CreatePipe(&silentPipe, &otherEnd, nullptr, 0));
    for (const bool canBeBrokenOff : {true, false}) {
        waitedFor = canBeBrokenOff ? nullptr : CreateEventW(nullptr, TRUE, FALSE, nullptr);
        stuckCalls = 0;
        Dm().StartCopy();
        while (stuckCalls == 0) {
            Sleep(1);
        }
        ProcessPendingMessages();
        EXPECT_EQ(reports_.back().text, L"Warte auf das Ziel: " + Dm().NAS);
        const auto begin = std::chrono::steady_clock::now();
        EndRun();
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
        EXPECT_EQ(reports_.back().text, L"") << "it is not waited for any more";
        while (canBeBrokenOff && freedCalls == 0) {
            Sleep(1);
        }
        // Nothing that still hangs is in the way of the next run.
        Run();
        EXPECT_EQ(Dm().ExitCode(), TExitCode::AllCopied);
    }
    EXPECT_EQ(destination_.Read(CopyOf(L"a.txt")), "content");
    EXPECT_EQ(freedBy, DWORD{ERROR_OPERATION_ABORTED});
    SetEvent(waitedFor);
    while (freedCalls < 2) {
        Sleep(1);  // the thread that was left behind
    }
    Sleep(50);
    CloseHandle(otherEnd);
    CloseHandle(silentPipe);
    CloseHandle(waitedFor);
}

TEST_F(CopyRun, LeftOversOfInterruptedRunsDisappear) {
    source_.Write(L"a.txt", "x", TestTime(0));
    destination_.Write(CopyOf(L"vardeko-12-34-56-7.vardeko"), "half");
    destination_.Write(CopyOf(L"~vardeko-12-34-56.tmp"), "half, by an earlier version");
    destination_.Write(CopyOf(L"vardeko-notes.vardeko"), "somebody's own file");
    AddSource(source_.Path());
    Run();
    EXPECT_FALSE(destination_.Read(CopyOf(L"vardeko-12-34-56-7.vardeko")));
    EXPECT_FALSE(destination_.Read(CopyOf(L"~vardeko-12-34-56.tmp")));
    EXPECT_TRUE(destination_.Read(CopyOf(L"vardeko-notes.vardeko")));
}

TEST_F(CopyRun, AListingThatBreaksOffIsNoEmptyFolder) {
    source_.Write(L"sub\\a.txt", "x", TestTime(0));
    source_.Write(L"sub\\b.txt", "y", TestTime(0));
    AddSource(source_.Path());
    Run();
    // What the end of a listing means is not what its beginning means: a folder that is there is not missing.
    static DWORD error;
    for (const DWORD tried : {ERROR_UNEXP_NET_ERR, ERROR_PATH_NOT_FOUND, ERROR_FILE_NOT_FOUND}) {
        error = tried;
        calls_.FindNextFileW = [](HANDLE, LPWIN32_FIND_DATAW) -> BOOL {
            SetLastError(error);
            return FALSE;
        };
        Run();
        const auto errors = Texts(TMessagePos::Error);
        ASSERT_EQ(errors.size(), 1U) << error
                                     << ": the source folder's listing breaks off before its sub-folder";
        EXPECT_NE(errors.front().find(source_.Path()), std::wstring::npos);
        EXPECT_EQ(Dm().Failures().Sum(), 1U);
    }
}

TEST_F(CopyRun, ASourceFolderThatDoesNotAnswerIsNotMissing) {
    source_.Write(L"a\\a.txt", "x", TestTime(0));
    source_.Write(L"b\\b.txt", "y", TestTime(0));
    AddSource(source_.At(L"a"));
    AddSource(source_.At(L"b"));
    static DWORD error;
    for (const DWORD tried :
         {ERROR_BAD_NETPATH, ERROR_ACCESS_DENIED, ERROR_PATH_NOT_FOUND, ERROR_NOT_READY}) {
        error = tried;
        calls_.GetFileAttributesExW = [](LPCWSTR path, GET_FILEEX_INFO_LEVELS level, LPVOID data) -> BOOL {
            if (std::wstring_view(path).ends_with(L"\\a")) {
                SetLastError(error);
                return FALSE;
            }
            return ::GetFileAttributesExW(path, level, data);
        };
        Run();
        const bool isTold = tried == ERROR_BAD_NETPATH || tried == ERROR_ACCESS_DENIED;
        EXPECT_EQ(Dm().Failures().Sum(), isTold ? 1U : 0U) << error;
        EXPECT_EQ(Texts(TMessagePos::Error).size(), isTold ? 1U : 0U) << error;
        EXPECT_EQ(destination_.Read(CopyOf(L"b\\b.txt")), "y") << "the other folders are copied";
    }
}

TEST_F(CopyRun, ATableThatIsOutOfReachForAMomentKeepsItsRecords) {
    source_.Write(L"a.txt", "x", TestTime(0));
    AddSource(source_.Path());
    Run();
    dm_.reset();
    // As a drive answers that is not yet connected.
    static bool isAsleep;
    isAsleep = true;
    calls_.CreateFileW = [](LPCWSTR path, DWORD access, DWORD sharing, LPSECURITY_ATTRIBUTES security,
                            DWORD disposition, DWORD flags, HANDLE pattern) -> HANDLE {
        if (isAsleep && std::wstring_view(path).ends_with(L"Vardeko.dat")) {
            isAsleep = false;
            SetLastError(ERROR_PATH_NOT_FOUND);
            return INVALID_HANDLE_VALUE;
        }
        return ::CreateFileW(path, access, sharing, security, disposition, flags, pattern);
    };
    source_.Write(L"b.txt", "y", TestTime(0));
    AddSource(source_.Path());
    Run();
    EXPECT_FALSE(isAsleep);
    EXPECT_EQ(destination_.Read(HostName() + L"\\Vardeko.dat")->size(), 42U + 78 * 2);
}

TEST_F(CopyRun, ADestinationListingThatBreaksOffIsAskedFileByFile) {
    source_.Write(L"a.txt", "x", TestTime(0));
    source_.Write(L"b.txt", "y", TestTime(0));
    AddSource(source_.Path());
    Run();
    calls_.FindFirstFileExW = [](LPCWSTR pattern, FINDEX_INFO_LEVELS level, LPVOID data,
                                 FINDEX_SEARCH_OPS search, LPVOID filter, DWORD flags) -> HANDLE {
        if (std::wstring_view(pattern).find(L"drive_") != std::wstring_view::npos) {
            SetLastError(ERROR_NETNAME_DELETED);
            return INVALID_HANDLE_VALUE;
        }
        return ::FindFirstFileExW(pattern, level, data, search, filter, flags);
    };
    Run();
    EXPECT_TRUE(Texts(TMessagePos::Memo).empty());
    EXPECT_EQ(Dm().Failures().Sum(), 0U);
}

TEST_F(CopyRun, FilesThatComeWithTheEndOfTheScanAreCopiedToo) {
    source_.Write(L"a.txt", "late", TestTime(0));
    AddSource(source_.Path());
    Dm().StartCopy();
    // The report that closes a pass lets in what waits: here the list, the closing row and the end together.
    onReport_ = [this](const TReport& report) {
        if (report.text == L"Suche nach veränderten Daten..") {
            Sleep(300);
            ProcessPendingMessages();
        }
    };
    Dm().CopyTimerTimer();
    for (int step = 0; step < 500 && !finished_; ++step) {
        Sleep(10);
        ProcessPendingMessages();
    }
    EXPECT_TRUE(finished_) << "nobody went on";
    EXPECT_EQ(destination_.Read(CopyOf(L"a.txt")), "late");
}

TEST_F(CopyRun, TaskMessagesReachTheirKinds) {
    IOmniTask task;
    for (const std::uint16_t identifier : std::initializer_list<std::uint16_t>{1, 2, 3, 99}) {
        TTaskMessage message{identifier, std::wstring(L"text")};
        Dm().OmniEventMonitorTaskMessage(task, message);
    }
    TTaskMessage number{4, std::int64_t{42}};
    Dm().OmniEventMonitorTaskMessage(task, number);
    ASSERT_EQ(reports_.size(), 4U) << "an unknown identifier is ignored";
    EXPECT_EQ(reports_[0].kind, TMessagePos::Status);
    EXPECT_EQ(reports_[1].kind, TMessagePos::Memo);
    EXPECT_EQ(reports_[2].kind, TMessagePos::Ignore);
    EXPECT_EQ(reports_[3].kind, TMessagePos::ThreadMsg);
    EXPECT_EQ(reports_[3].text, L"42");
}

TEST_F(CopyRun, AFreshStartWritesAnEmptyTableAndAnUnchangedOneIsLeftAlone) {
    const std::wstring path = configuration_ + L"\\NASConf.Dat";
    Dm().DataModuleDestroy();
    std::string bytes;
    ASSERT_EQ(ReadWholeFile(SystemPlatformCalls(), path, bytes), ERROR_SUCCESS);
    EXPECT_TRUE(bytes.starts_with("Ver"));

    dm_.reset();
    Dm();
    // Meanwhile another copy of the program saves its rows.
    std::ofstream(std::filesystem::path(path), std::ios::binary) << "newer";
    Dm().DataModuleDestroy();
    ASSERT_EQ(ReadWholeFile(SystemPlatformCalls(), path, bytes), ERROR_SUCCESS);
    EXPECT_EQ(bytes, "newer");
    EXPECT_THROW(TDM(SystemPlatformCalls()).DataModuleCreate(), EProblem);
}

}  // namespace
