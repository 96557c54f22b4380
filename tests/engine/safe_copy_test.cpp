// One file copied safely, on real folders; what the test platform does not do stands in, as it is documented.
#include "engine/safe_copy.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <thread>
#include <vector>

#include "test_folder.h"
#include "watched_calls.h"

namespace {

std::int64_t Ticks(const FILETIME& time) {
    return static_cast<std::int64_t>(std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime);
}

FILETIME FromTicks(std::int64_t ticks) {
    return {static_cast<DWORD>(ticks & 0xFFFFFFFF), static_cast<DWORD>(ticks >> 32)};
}

bool IsReadOnly(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
}

class SafeCopy : public testing::Test {
protected:
    SafeCopy() { slept_ = 0; }

    TCopyResult Copy(bool moveAside = false) {
        const auto attributes = QueryAttributes(SystemPlatformCalls(), source_);
        const TFileTimes times = attributes.Times();
        return CopyFileSafely(calls_, traits_,
                              {.source = source_,
                               .target = target_,
                               .size = attributes.Size(),
                               .times = &times,
                               .moveAside = moveAside});
    }

    // The calls on the way in their order. `refuse` answers the error with which one fails.
    std::vector<std::string> CallsOfCopy(bool moveAside, const TWatchedCalls::TBefore& refuse) {
        std::vector<std::string> order;
        const TWatchedCalls watch([&](const char* call, std::wstring_view path) {
            order.emplace_back(call);
            return refuse(call, path);
        });
        result_ = Copy(moveAside);
        return order;
    }

    TTestFolder folder_;
    std::wstring source_ = folder_.Write(L"source\\a.txt", "new content", TestTime(5));
    std::wstring target_ = folder_.Write(L"nas\\a.txt", "old", TestTime(0));
    TPlatformCalls calls_ = [] {
        TPlatformCalls calls = TWatchedCalls::Table();
        calls.Sleep = [](DWORD milliseconds) { slept_ += milliseconds; };
        return calls;
    }();
    TDestinationTraits traits_;
    TCopyResult result_;
    static inline DWORD slept_ = 0;
};

DWORD RefuseNothing(const char*, std::wstring_view) {
    return ERROR_SUCCESS;
}

TEST_F(SafeCopy, TakesSevenCallsAndTheNameOnlyWhenTheBytesAreSafe) {
    static_cast<void>(Copy());  // knows the destination from now on
    EXPECT_EQ(CallsOfCopy(false, RefuseNothing),
              (std::vector<std::string>{"CopyFileEx", "CreateFile", "GetFileSizeEx", "SetFileTime",
                                        "FlushFileBuffers", "SetFileInformationByHandle", "CloseHandle"}));
    EXPECT_EQ(result_.error, DWORD{ERROR_SUCCESS});
    EXPECT_EQ(result_.bytes, 11);
    const auto withHistory = CallsOfCopy(true, RefuseNothing);
    EXPECT_EQ(withHistory.size(), 7U + 3);
    EXPECT_LT(std::ranges::find(withHistory, "FlushFileBuffers"), std::ranges::find(withHistory, "MoveFile"));
    EXPECT_EQ(ContentOf(folder_.At(L"nas\\a #001.txt")), "new content");
    EXPECT_EQ(folder_.FileCount(), 3U);
}

// Each call in turn is refused for good, with each way of going on that there is for it.
TEST_F(SafeCopy, ARefusalThatStaysLeavesTheOldCopyAsItWas) {
    using TCalls = std::vector<std::string>;
    const std::vector<std::pair<TCalls, DWORD>> refusals{
        {{"CopyFileEx"}, ERROR_DISK_FULL},
        {{"CopyFileEx"}, ERROR_FILE_ENCRYPTED},
        {{"CreateFile"}, ERROR_SHARING_VIOLATION},
        {{"GetFileSizeEx"}, ERROR_NETNAME_DELETED},
        {{"FlushFileBuffers"}, ERROR_DISK_FULL},
        {{"SetFileInformationByHandle", "MoveFileEx"}, ERROR_ACCESS_DENIED},
        {{"SetFileInformationByHandle", "MoveFileEx"}, ERROR_INVALID_PARAMETER},
        {{"SetFileInformationByHandle"}, ERROR_NETNAME_DELETED}};
    SetFileAttributesW(target_.c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN);
    for (const auto& [refused, error] : refusals) {
        for (const bool moveAside : {false, true}) {
            CallsOfCopy(moveAside, [&](const char* call, std::wstring_view) {
                return std::ranges::find(refused, call) != refused.end() ? error : ERROR_SUCCESS;
            });
            EXPECT_EQ(result_.error, error) << refused.front();
            EXPECT_EQ(ContentOf(target_), "old") << refused.front();
            EXPECT_TRUE(IsReadOnly(target_)) << refused.front();
            EXPECT_EQ(folder_.FileCount(), 2U) << refused.front() << " left something";
        }
    }
    CallsOfCopy(true, [](const char* call, std::wstring_view) -> DWORD {
        return call == std::string_view("MoveFile") ? ERROR_INVALID_NAME : ERROR_SUCCESS;
    });
    EXPECT_EQ(result_.error, DWORD{ERROR_INVALID_NAME});
    EXPECT_EQ(ContentOf(target_), "old") << "what cannot be moved aside is not written over";
}

TEST_F(SafeCopy, ARefusalForAMomentIsWaitedOut) {
    for (const char* refused : {"CreateFile", "SetFileInformationByHandle", "MoveFile"}) {
        for (const DWORD error : {ERROR_ACCESS_DENIED, ERROR_SHARING_VIOLATION, ERROR_LOCK_VIOLATION}) {
            slept_ = 0;
            folder_.Write(L"nas\\a.txt", "old");
            int left = 4;
            CallsOfCopy(true, [&](const char* call, std::wstring_view) {
                return call == std::string_view(refused) && left-- > 0 ? error : ERROR_SUCCESS;
            });
            EXPECT_EQ(result_.error, DWORD{ERROR_SUCCESS}) << refused;
            EXPECT_GT(slept_, 0U);
            EXPECT_LE(slept_, 1000U);
        }
    }
    EXPECT_EQ(ContentOf(target_), "new content");
    EXPECT_FALSE(traits_.renamesOnlyByPath);
}

TEST_F(SafeCopy, ADenialThatStaysCostsASecondForAFewFilesOnly) {
    const auto deny = [](const char* call, std::wstring_view) -> DWORD {
        return call == std::string_view("SetFileInformationByHandle") ||
                       call == std::string_view("MoveFileEx")
                   ? ERROR_ACCESS_DENIED
                   : ERROR_SUCCESS;
    };
    CallsOfCopy(false, deny);
    EXPECT_EQ(slept_, 1000U);
    for (int file = 1; file < 20; ++file) {
        CallsOfCopy(false, deny);
    }
    EXPECT_LT(slept_, 3500U);
    CallsOfCopy(false, RefuseNothing);
    EXPECT_EQ(result_.error, DWORD{ERROR_SUCCESS});
}

TEST_F(SafeCopy, RenamesByPathWhereAnOpenFileCannotBeRenamed) {
    const auto refuse = [](const char* call, std::wstring_view) -> DWORD {
        return call == std::string_view("SetFileInformationByHandle") ? ERROR_NOT_SUPPORTED : ERROR_SUCCESS;
    };
    CallsOfCopy(false, refuse);
    EXPECT_EQ(ContentOf(target_), "new content");
    for (const bool moveAside : {false, true}) {
        const auto later = CallsOfCopy(moveAside, refuse);
        EXPECT_EQ(std::ranges::count(later, "SetFileInformationByHandle"), 0) << "it is known by now";
        EXPECT_LT(std::ranges::find(later, "CloseHandle"), std::ranges::find(later, "MoveFileEx"));
    }
    // What only the close tells of, and too late for another way.
    folder_.Write(L"nas\\a.txt", "old");
    CallsOfCopy(true, [&](const char* call, std::wstring_view) -> DWORD {
        return call == std::string_view("CloseHandle") ? ERROR_DISK_FULL : ERROR_SUCCESS;
    });
    EXPECT_EQ(result_.error, DWORD{ERROR_DISK_FULL});
    EXPECT_EQ(ContentOf(target_), "old");
}

TEST_F(SafeCopy, APieceOfTheSourceIsNoCopy) {
    calls_.CopyFileExW = [](LPCWSTR, LPCWSTR to, LPPROGRESS_ROUTINE, LPVOID, LPBOOL, DWORD) -> BOOL {
        std::ofstream(std::filesystem::path(to), std::ios::binary) << "new";
        return TRUE;
    };
    EXPECT_EQ(Copy().error, DWORD{ERROR_READ_FAULT});
    EXPECT_EQ(ContentOf(target_), "old");
    EXPECT_EQ(folder_.FileCount(), 2U);
    // But a source has a right to change: it grew or shrank since it was asked, or goes on growing.
    for (const auto& [asked, now] : {std::pair{11, "now"}, {1, "now"}, {2, "longer now"}}) {
        folder_.Write(L"source\\a.txt", now);
        folder_.Write(L"nas\\a.txt", "old");
        EXPECT_EQ(
            CopyFileSafely(calls_, traits_, {.source = source_, .target = target_, .size = asked}).error,
            DWORD{ERROR_SUCCESS});
        EXPECT_EQ(ContentOf(target_), "new");
    }
}

TEST_F(SafeCopy, ReadOnlySourcesAndTargetsAreNoObstacle) {
    SetFileAttributesW(source_.c_str(), FILE_ATTRIBUTE_READONLY);
    // As Windows does: a read-only file is not opened for writing and not replaced.
    calls_.CreateFileW = [](LPCWSTR path, DWORD access, DWORD sharing, LPSECURITY_ATTRIBUTES security,
                            DWORD disposition, DWORD flags, HANDLE pattern) -> HANDLE {
        if ((access & GENERIC_WRITE) != 0 && IsReadOnly(path)) {
            SetLastError(ERROR_ACCESS_DENIED);
            return INVALID_HANDLE_VALUE;
        }
        return ::CreateFileW(path, access, sharing, security, disposition, flags, pattern);
    };
    calls_.SetFileInformationByHandle = [](HANDLE file, FILE_INFO_BY_HANDLE_CLASS kind, LPVOID data,
                                           DWORD size) -> BOOL {
        if (kind == FileRenameInfo && IsReadOnly(static_cast<FILE_RENAME_INFO*>(data)->FileName)) {
            SetLastError(ERROR_ACCESS_DENIED);
            return FALSE;
        }
        return ::SetFileInformationByHandle(file, kind, data, size);
    };
    // Nor is a source of some kinds opened for writing by the copy.
    static DWORD writingRefused;
    calls_.CopyFileExW = [](LPCWSTR from, LPCWSTR to, LPPROGRESS_ROUTINE routine, LPVOID data, LPBOOL cancel,
                            DWORD flags) -> BOOL {
        if (flags == COPY_FILE_OPEN_SOURCE_FOR_WRITE) {
            SetLastError(writingRefused);
            return FALSE;
        }
        return ::CopyFileExW(from, to, routine, data, cancel, flags);
    };
    for (const DWORD error :
         {ERROR_ACCESS_DENIED, ERROR_WRITE_PROTECT, ERROR_SHARING_VIOLATION, ERROR_LOCK_VIOLATION}) {
        writingRefused = error;
        SetFileAttributesW(target_.c_str(), FILE_ATTRIBUTE_NORMAL);
        folder_.Write(L"nas\\a.txt", "old");
        SetFileAttributesW(target_.c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN);
        EXPECT_EQ(Copy().error, DWORD{ERROR_SUCCESS});
        EXPECT_EQ(ContentOf(target_), "new content");
        EXPECT_TRUE(IsReadOnly(target_)) << "as its source is";
        EXPECT_EQ(Ticks(ReadFileTimes(SystemPlatformCalls(), target_)->lastWrite), Ticks(TestTime(5)));
    }
    EXPECT_EQ(slept_, 0U);
}

TEST_F(SafeCopy, ATargetThatIsItsOwnSourceIsNotTouched) {
    DeleteFileW(target_.c_str());
    ASSERT_TRUE(CreateHardLinkW(target_.c_str(), source_.c_str(), nullptr));
    TSafeCopy copy{.source = source_, .target = target_, .moveAside = true, .targetMayBeSource = true};
    const TCopyResult linked = CopyFileSafely(calls_, traits_, copy);
    EXPECT_TRUE(linked.targetIsSource);
    EXPECT_NE(linked.error, DWORD{ERROR_SUCCESS});
    EXPECT_EQ(folder_.FileCount(), 2U);
    DeleteFileW(target_.c_str());
    EXPECT_EQ(CopyFileSafely(calls_, traits_, copy).error, DWORD{ERROR_SUCCESS});
}

// A destination that keeps multiples of a unit only.
struct TRounding {
    std::int64_t unit;
    bool toNearest;
};
TRounding rounding;
int timesRead;

BOOL WINAPI SetRoundedTime(HANDLE file, const FILETIME* creation, const FILETIME* access,
                           const FILETIME* write) {
    const std::int64_t added = rounding.toNearest ? rounding.unit / 2 : 0;
    const FILETIME kept = FromTicks((Ticks(*write) + added) / rounding.unit * rounding.unit);
    return ::SetFileTime(file, creation, access, &kept);
}

TEST_F(SafeCopy, IsNeverOlderThanItsSourceWhateverTheDestinationKeeps) {
    calls_.SetFileTime = &SetRoundedTime;
    calls_.GetFileTime = [](HANDLE file, LPFILETIME creation, LPFILETIME access, LPFILETIME write) -> BOOL {
        ++timesRead;
        return ::GetFileTime(file, creation, access, write);
    };
    const std::int64_t second = Ticks(TestTime(1)) - Ticks(TestTime(0));
    for (const bool toNearest : {false, true}) {
        for (const std::int64_t unit :
             {std::int64_t{1}, std::int64_t{10}, second / 1000, second / 100, second, 2 * second}) {
            rounding = {unit, toNearest};
            timesRead = 0;
            TDestinationTraits traits;
            // Even, odd and broken seconds: some tell nothing of what the destination keeps.
            for (const std::int64_t fraction :
                 {std::int64_t{0}, second, 3 * second, second * 3 / 10 + 1, second * 7 / 10 + 3,
                  second * 13 / 10 + 9999, second / 4, 2 * second - 1}) {
                const std::int64_t wanted = Ticks(TestTime(0)) + fraction;
                const TFileTimes times{TestTime(1), TestTime(2), FromTicks(wanted)};
                const TCopyResult copied =
                    CopyFileSafely(calls_, traits, {.source = source_, .target = target_, .times = &times});
                const std::int64_t kept = Ticks(ReadFileTimes(SystemPlatformCalls(), target_)->lastWrite);
                EXPECT_GE(kept, wanted) << unit << ' ' << fraction << ' ' << toNearest;
                EXPECT_LT(kept, wanted + unit) << unit << ' ' << fraction << ' ' << toNearest;
                EXPECT_EQ(Ticks(copied.lastWrite), kept);
            }
            EXPECT_LT(timesRead, 8) << "asked for anew by every file";
        }
    }
}

TEST_F(SafeCopy, ATimeThatIsNotKeptAtAllIsNoObstacle) {
    calls_.GetFileTime = [](HANDLE, LPFILETIME, LPFILETIME, LPFILETIME write) -> BOOL {
        *write = TestTime(-3600);
        return TRUE;
    };
    EXPECT_EQ(Copy().error, DWORD{ERROR_SUCCESS});
    EXPECT_EQ(Ticks(ReadFileTimes(SystemPlatformCalls(), target_)->lastWrite), Ticks(TestTime(5)));
}

TEST_F(SafeCopy, SeveralThreadsCopyAtTheSameTime) {
    constexpr int kFiles = 10;
    std::array<int, 8> copied{};
    {
        std::vector<std::jthread> threads;
        for (std::size_t thread = 0; thread < copied.size(); ++thread) {
            threads.emplace_back([&, thread] {
                for (int file = 0; file < kFiles; ++file) {
                    const std::wstring target = target_ + std::to_wstring(thread) + std::to_wstring(file);
                    const TFileTimes times{TestTime(1), TestTime(2), TestTime(3)};
                    const auto result = CopyFileSafely(
                        calls_, traits_, {.source = source_, .target = target, .size = 11, .times = &times});
                    copied[thread] += result.error == ERROR_SUCCESS ? 1 : 0;
                }
            });
        }
    }
    EXPECT_TRUE(std::ranges::all_of(copied, [](int count) { return count == kFiles; }));
    EXPECT_EQ(folder_.FileCount(), 2 + copied.size() * kFiles) << "nothing is left beside them";
}

}  // namespace
