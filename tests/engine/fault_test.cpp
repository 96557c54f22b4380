// Runs in which platform calls fail: whatever breaks, nothing that was whole is lost.
#include <algorithm>
#include <atomic>
#include <iostream>
#include <map>
#include <set>

#include "engine/copy_run_fixture.h"
#include "hashdb/hash_table_file.h"
#include "store/source_folder_file.h"
#include "support/case_folding.h"
#include "support/path_hash.h"
#include "support/temporary_name.h"
#include "support/text.h"
#include "watched_calls.h"

namespace {

// The errors that each call can really return; every one is tried at every place.
const std::map<std::string, std::vector<DWORD>>& ErrorsOf() {
    static const std::map<std::string, std::vector<DWORD>> errors{
        {"FindFirstFileEx", {ERROR_ACCESS_DENIED, ERROR_PATH_NOT_FOUND, ERROR_BAD_NETPATH}},
        {"FindNextFile", {ERROR_UNEXP_NET_ERR, ERROR_NETNAME_DELETED, ERROR_PATH_NOT_FOUND}},
        {"GetFileAttributesEx", {ERROR_FILE_NOT_FOUND, ERROR_ACCESS_DENIED, ERROR_NETNAME_DELETED}},
        {"SetFileAttributes", {ERROR_ACCESS_DENIED}},
        {"CopyFileEx",
         {ERROR_ACCESS_DENIED, ERROR_SHARING_VIOLATION, ERROR_DISK_FULL, ERROR_NETNAME_DELETED}},
        {"MoveFile", {ERROR_SHARING_VIOLATION}},
        {"MoveFileEx", {ERROR_ACCESS_DENIED, ERROR_SHARING_VIOLATION, ERROR_NETNAME_DELETED}},
        {"DeleteFile", {ERROR_SHARING_VIOLATION}},
        {"CreateDirectory", {ERROR_ACCESS_DENIED, ERROR_DISK_FULL}},
        {"CreateFile", {ERROR_ACCESS_DENIED, ERROR_SHARING_VIOLATION, ERROR_DISK_FULL, ERROR_PATH_NOT_FOUND}},
        {"ReadFile", {ERROR_READ_FAULT}},
        {"WriteFile", {ERROR_DISK_FULL, ERROR_NETNAME_DELETED}},
        {"SetFilePointerEx", {ERROR_INVALID_PARAMETER}},
        {"CloseHandle", {ERROR_DISK_FULL, ERROR_NETNAME_DELETED}},
        {"GetFileTime", {ERROR_ACCESS_DENIED}},
        {"SetFileInformationByHandle",
         {ERROR_ACCESS_DENIED, ERROR_SHARING_VIOLATION, ERROR_INVALID_PARAMETER, ERROR_NETNAME_DELETED}},
        {"GetFileSizeEx", {ERROR_NETNAME_DELETED}},
        {"GetFileInformationByHandle", {ERROR_NETNAME_DELETED}},
        {"FlushFileBuffers", {ERROR_DISK_FULL, ERROR_NETNAME_DELETED}},
        {"SetFileTime", {ERROR_ACCESS_DENIED}}};
    return errors;
}

// Files of this name pass for so large that they are copied with progress, which the stand-in for the copy
// then tells; gigabytes would take too long for hundreds of runs.
constexpr std::wstring_view kLarge = L"large.bin";
constexpr LONGLONG kLargeSize = 100 << 20;
// Of no other file's size: by a handle, it is known by that.
constexpr std::string_view kLargeContent = "a large file";

bool IsLarge(std::wstring_view path) {
    return path.ends_with(kLarge);
}

BOOL WINAPI AttributesWithLargeSize(LPCWSTR path, GET_FILEEX_INFO_LEVELS level, LPVOID information) {
    const BOOL answered = TWatchedCalls::Table().GetFileAttributesExW(path, level, information);
    if (answered && IsLarge(path)) {
        static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(information)->nFileSizeLow = kLargeSize;
    }
    return answered;
}

BOOL WINAPI SizeWithLargeSize(HANDLE file, PLARGE_INTEGER size) {
    const BOOL answered = TWatchedCalls::Table().GetFileSizeEx(file, size);
    if (answered && size->QuadPart == static_cast<LONGLONG>(kLargeContent.size())) {
        size->QuadPart = kLargeSize;
    }
    return answered;
}

BOOL WINAPI CopyWithProgress(LPCWSTR from, LPCWSTR to, LPPROGRESS_ROUTINE routine, LPVOID data, LPBOOL cancel,
                             DWORD flags) {
    const auto tell = [&](LONGLONG done, DWORD reason) {
        LARGE_INTEGER total{};
        LARGE_INTEGER transferred{};
        total.QuadPart = kLargeSize;
        transferred.QuadPart = done;
        return routine == nullptr || routine(total, transferred, total, transferred, 1, reason, nullptr,
                                             nullptr, data) == PROGRESS_CONTINUE;
    };
    EXPECT_EQ(routine != nullptr, IsLarge(from));
    if (!tell(0, CALLBACK_STREAM_SWITCH) || !tell(kLargeSize / 2, CALLBACK_CHUNK_FINISHED)) {
        SetLastError(ERROR_REQUEST_ABORTED);
        return FALSE;
    }
    return TWatchedCalls::Table().CopyFileExW(from, to, nullptr, nullptr, cancel, flags) &&
           tell(kLargeSize, CALLBACK_CHUNK_FINISHED);
}

class FaultyRun : public CopyRun {
protected:
    FaultyRun() {
        calls_ = TWatchedCalls::Table();
        UseMovedClock(calls_);
        calls_.GetFileAttributesExW = &AttributesWithLargeSize;
        calls_.GetFileSizeEx = &SizeWithLargeSize;
        calls_.CopyFileExW = &CopyWithProgress;
    }

    // A source with a new, a changed, an unchanged and a large file, and a backup that knows some of them.
    void MakeTrees(bool history) {
        history_ = history;
        dm_.reset();
        DeleteFileW((configuration_ + L"\\NASConf.Dat").c_str());
        source_.Clear();
        destination_.Clear();
        source_.Write(L"changed.txt", "state one", TestTime(0));
        source_.Write(L"sub\\unchanged.txt", "stays", TestTime(0));
        AddSource(source_.Path());
        if (history) {
            Dm().MemData.Edit();
            Dm().MemData.Working().History = true;
            Dm().MemData.Post();
        }
        Run();
        Dm().DataModuleDestroy();
        dm_.reset();
        source_.Write(L"changed.txt", "state two", TestTime(9));
        source_.Write(L"new.txt", "new", TestTime(3));
        source_.Write(kLarge, kLargeContent, TestTime(3));
        source_.Write(L"new folder\\deep\\file.txt", "deep", TestTime(3));
        destination_.Write(CopyOf(L"vardeko-1-2-3-4.vardeko"), "left over");
    }

    // One run of a fresh data module, from loading the tables to saving them.
    void WholeRun() {
        reports_.clear();
        try {
            Run();
            Dm().DataModuleDestroy();
        } catch (const std::exception&) {
            // The program would not have started.
        }
        dm_.reset();
    }

    // What must hold after a run in which anything failed.
    void ExpectNothingLost(const std::string& what) {
        const auto changed = destination_.Read(CopyOf(L"changed.txt"));
        EXPECT_TRUE(changed == "state one" || changed == "state two")
            << what << ": changed.txt holds " << changed.value_or("(nothing)");
        const auto numbered = destination_.Read(CopyOf(L"changed #001.txt"));
        EXPECT_EQ(numbered.value_or("state one"), "state one") << what;
        EXPECT_TRUE(changed == "state one" || numbered || !history_) << what << ": a version is gone";
        EXPECT_EQ(destination_.Read(CopyOf(L"sub\\unchanged.txt")), "stays") << what;
        for (const auto& [name, content] : {std::pair{L"new.txt", std::string_view("new")},
                                            {L"large.bin", kLargeContent},
                                            {L"new folder\\deep\\file.txt", "deep"}}) {
            const auto copy = destination_.Read(CopyOf(name));
            EXPECT_TRUE(!copy || *copy == content) << what << ": half a copy of " << ToUtf8(name);
        }
        THashTable table;
        ASSERT_NO_THROW(LoadHashTable(SystemPlatformCalls(), HostFolder() + L"\\Vardeko.dat", table)) << what;
        table.AddIndex();
        const auto recorded = table.Find(PathDigest(source_.At(L"changed.txt")));
        ASSERT_TRUE(recorded) << what;
        EXPECT_TRUE(changed == "state two" || *recorded == TLocalTimeRule().ToLocal(TestTime(0)))
            << what << ": a record for a copy that is not there";
        TSourceFolderTable folders;
        EXPECT_NO_THROW(static_cast<void>(
            LoadSourceFolders(SystemPlatformCalls(), configuration_ + L"\\NASConf.Dat", folders)))
            << what;
        EXPECT_EQ(folders.RecordCount(), 1U) << what;
    }

    void ExpectRepaired(const std::string& what) {
        for (const wchar_t* name : {L"changed.txt", L"new.txt", L"large.bin", L"sub\\unchanged.txt",
                                    L"new folder\\deep\\file.txt"}) {
            EXPECT_EQ(destination_.Read(CopyOf(name)), source_.Read(name)) << what;
        }
        for (const auto& entry : std::filesystem::recursive_directory_iterator(destination_.Path())) {
            const std::wstring name = entry.path().filename().wstring();
            EXPECT_FALSE(IsTemporaryName(name) || name.ends_with(L".new"))
                << what << " left " << ToUtf8(name);
        }
    }

    bool history_ = false;

    // Fails each call of a run once, with each of its errors; returns how many runs that took.
    int FailEveryCallOnce(bool history, std::string_view parallel) {
        WriteSettings("NASDIR=" + ToUtf8(destination_.Path()) + "\r\nPARALLEL=" + std::string(parallel) +
                      "\r\n");
        int runs = 0;
        for (int failing = 0;; ++failing) {
            std::size_t errorIndex = 0;
            std::size_t errorCount = 1;
            bool reached = false;
            for (; errorIndex < errorCount; ++errorIndex, ++runs) {
                MakeTrees(history);
                std::atomic<int> calls = 0;
                std::string what;
                {
                    const TWatchedCalls watch([&](const char* call, std::wstring_view) -> DWORD {
                        if (calls++ != failing) {
                            return ERROR_SUCCESS;
                        }
                        const auto& errors = ErrorsOf().at(call);
                        // Scan and copy overlap, so the call of this number is not always the same one.
                        errorCount = errors.size();
                        what = std::string(call) + " number " + std::to_string(failing) + " fails with " +
                               std::to_string(errors[errorIndex % errors.size()]);
                        return errors[errorIndex % errors.size()];
                    });
                    WholeRun();
                }
                if (what.empty()) {
                    break;
                }
                reached = true;
                ExpectNothingLost(what);
                WholeRun();
                ExpectRepaired(what);
                if (HasFailure()) {
                    return runs;
                }
            }
            if (!reached) {
                return runs;
            }
        }
    }
};

TEST_F(FaultyRun, EveryCallFailsOnce) {
    const int plain = FailEveryCallOnce(false, "8");
    const int withHistory = FailEveryCallOnce(true, "1");
    std::cout << "failed calls tried: " << plain << " without, " << withHistory
              << " with earlier copies kept\n";
    EXPECT_GT(plain, 100);
}

TEST_F(FaultyRun, ANasThatGoesAwayEndsTheRun) {
    for (const DWORD error : {ERROR_NETNAME_DELETED, ERROR_PATH_NOT_FOUND}) {
        MakeTrees(false);
        for (int index = 0; index < 200; ++index) {
            source_.Write(L"many\\f" + std::to_wstring(index), "x", TestTime(0));
        }
        const auto tableBefore = destination_.Read(HostName() + L"\\Vardeko.dat");
        std::atomic<bool> gone = false;
        std::atomic<int> askedWhileGone = 0;
        const std::wstring nas = FoldedCase(destination_.Path());
        {
            const TWatchedCalls watch([&](const char* call, std::wstring_view path) -> DWORD {
                gone = gone || call == std::string_view("CopyFileEx");
                if (!gone || (!path.empty() && FoldedCase(path).find(nas) == std::wstring::npos &&
                              call != std::string_view("CopyFileEx"))) {
                    return ERROR_SUCCESS;
                }
                ++askedWhileGone;
                return error;
            });
            WholeRun();
        }
        // A minute long the destination is asked once a second, on a task.
        EXPECT_LT(askedWhileGone, 60 + 40) << "every one of them may wait out the network";
        const auto errors = Texts(TMessagePos::Error);
        EXPECT_EQ(std::ranges::count_if(errors,
                                        [](const std::wstring& text) {
                                            return text.find(L"nicht mehr erreichbar") != std::wstring::npos;
                                        }),
                  1)
            << "also when several copies end together";
        EXPECT_EQ(destination_.Read(HostName() + L"\\Vardeko.dat"), tableBefore);
        WholeRun();
        ExpectRepaired("after the NAS came back");
        EXPECT_EQ(destination_.Read(CopyOf(L"many\\f199")), "x");
    }
}

// Whatever is asked of source and destination may take a minute: never the thread that keeps the window
// alive.
TEST_F(FaultyRun, AsksNothingOfADiskOnTheWindowsThread) {
    MakeTrees(true);
    const std::wstring nas = FoldedCase(destination_.Path());
    const std::wstring source = FoldedCase(source_.Path());
    const DWORD windowThread = GetCurrentThreadId();
    std::set<std::string> asked;
    {
        const TWatchedCalls watch([&](const char* call, std::wstring_view path) -> DWORD {
            const std::wstring folded = FoldedCase(path);
            const bool isOfADisk =
                folded.find(nas) != std::wstring::npos || folded.find(source) != std::wstring::npos;
            if (isOfADisk && GetCurrentThreadId() == windowThread) {
                asked.insert(std::string(call) + " " + ToUtf8(path));
            }
            // Two files that vanish leave a question for their folder, a refused one writes a line.
            const bool vanishes = path.ends_with(L"new.txt") || path.ends_with(L"file.txt");
            const bool isRefused = call == std::string_view("CopyFileEx") && path.ends_with(L"changed.txt");
            return vanishes ? ERROR_FILE_NOT_FOUND : isRefused ? ERROR_DISK_FULL : ERROR_SUCCESS;
        });
        WholeRun();
    }
    EXPECT_TRUE(asked.empty()) << *asked.begin() << " and " << asked.size() - 1 << " more";
    EXPECT_TRUE(destination_.Read(HostName() + L"\\Error.log"));
    EXPECT_EQ(destination_.Read(CopyOf(L"large.bin")), kLargeContent);
    EXPECT_GT(destination_.Read(HostName() + L"\\Vardeko.dat")->size(), 42U + 78);
}

// Folders in which nothing is to copy ask for no file, but each for a listing.
TEST_F(FaultyRun, ANasThatGoesAwayEndsAScanThatFindsNothing) {
    MakeTrees(false);
    WholeRun();
    for (int index = 0; index < 100; ++index) {
        std::filesystem::create_directories(source_.At(L"empty\\" + std::to_wstring(index)));
    }
    const std::wstring nas = FoldedCase(destination_.Path());
    std::atomic<bool> gone = false;
    std::atomic<int> askedWhileGone = 0;
    {
        const TWatchedCalls watch([&](const char*, std::wstring_view path) -> DWORD {
            if (FoldedCase(path).find(nas) == std::wstring::npos) {
                return ERROR_SUCCESS;
            }
            gone = gone || path.ends_with(L"\\empty\\*");
            askedWhileGone += gone ? 1 : 0;
            return gone ? ERROR_BAD_NETPATH : ERROR_SUCCESS;
        });
        WholeRun();
    }
    EXPECT_LT(askedWhileGone, 60 + 10) << "a minute long once a second";
    const auto errors = Texts(TMessagePos::Error);
    ASSERT_EQ(errors.size(), 1U);
    EXPECT_NE(errors.front().find(L"Das Ziel ist nicht erreichbar"), std::wstring::npos);
}

}  // namespace
