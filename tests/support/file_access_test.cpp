#include "support/file_access.h"

#include <gtest/gtest.h>
#include <sddl.h>

#include <stdexcept>
#include <string>
#include <utility>

#include "test_folder.h"
#include "watched_calls.h"

namespace {

TErrorCode Replace(const TPlatformCalls& calls, const std::wstring& path, std::string_view content,
                   TRightsOfNewFile rights = TRightsOfNewFile::OfFolder) {
    const auto write = [content](const TByteSink& sink) {
        const TErrorCode error = sink(content.substr(0, content.size() / 2));
        return error != ERROR_SUCCESS ? error : sink(content.substr(content.size() / 2));
    };
    return ReplaceWholeFile(calls, path, write, rights);
}

template <typename Result>
Result Fail(DWORD code, Result result) {
    SetLastError(code);
    return result;
}

// One table per call on the way to a replaced file, in which that call fails.
struct TFailingTable {
    const char* name;
    void (*breakTable)(TPlatformCalls& calls);
};

const TFailingTable kFailingTables[] = {
    {"create",
     [](TPlatformCalls& calls) {
         calls.CreateFileW = [](const wchar_t*, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD, HANDLE) {
             return Fail<HANDLE>(ERROR_DISK_FULL, INVALID_HANDLE_VALUE);
         };
     }},
    {"write",
     [](TPlatformCalls& calls) {
         calls.WriteFile = [](HANDLE, const void*, DWORD, DWORD*, OVERLAPPED*) {
             return Fail(ERROR_DISK_FULL, FALSE);
         };
     }},
    {"flush",
     [](TPlatformCalls& calls) {
         calls.FlushFileBuffers = [](HANDLE) { return Fail(ERROR_DISK_FULL, FALSE); };
     }},
    {"rename",
     [](TPlatformCalls& calls) {
         calls.MoveFileExW = [](const wchar_t*, const wchar_t*, DWORD) {
             return Fail(ERROR_DISK_FULL, FALSE);
         };
     }},
};

TEST(ReplaceWholeFile, LeavesTheOldFileWholeWhenACallFails) {
    const TTestFolder folder;
    const std::wstring path = folder.Write(L"Vardeko.dat", "old");
    for (const DWORD attributes : {FILE_ATTRIBUTE_ARCHIVE, FILE_ATTRIBUTE_READONLY}) {
        for (const TFailingTable& failing : kFailingTables) {
            SetFileAttributesW(path.c_str(), attributes);
            TPlatformCalls calls = SystemPlatformCalls();
            failing.breakTable(calls);
            EXPECT_EQ(Replace(calls, path, "the new content"), DWORD{ERROR_DISK_FULL}) << failing.name;
            EXPECT_EQ(ContentOf(path), "old") << failing.name;
            EXPECT_EQ(ContentOf(path + L".new"), "<missing>") << failing.name;
            const TAttributes now = QueryAttributes(SystemPlatformCalls(), path);
            ASSERT_TRUE(now.Exists());
            EXPECT_EQ(now.IsReadOnlyFile(), attributes == FILE_ATTRIBUTE_READONLY) << failing.name;
        }
    }
}

TEST(ReplaceWholeFile, LeavesTheOldFileWholeWhenTheWriterGivesUp) {
    const TPlatformCalls& calls = SystemPlatformCalls();
    const TTestFolder folder;
    const std::wstring path = folder.Write(L"Vardeko.dat", "old");
    const auto refuse = [](const TByteSink& sink) -> TErrorCode {
        EXPECT_EQ(sink("half of it"), DWORD{ERROR_SUCCESS});
        return ERROR_INVALID_DATA;
    };
    EXPECT_EQ(ReplaceWholeFile(calls, path, refuse), DWORD{ERROR_INVALID_DATA});
    const auto raise = [](const TByteSink&) -> TErrorCode { throw std::runtime_error("out of memory"); };
    EXPECT_THROW((void)ReplaceWholeFile(calls, path, raise), std::runtime_error);
    EXPECT_EQ(ContentOf(path), "old");
    EXPECT_EQ(ContentOf(path + L".new"), "<missing>");
}

TEST(ReplaceWholeFile, ReplacesAndCreates) {
    const TPlatformCalls& calls = SystemPlatformCalls();
    const TTestFolder folder;
    const std::wstring path = folder.At(L"Vardeko.dat");
    ASSERT_EQ(Replace(calls, path, "first"), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(ContentOf(path), "first");
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY);
    folder.Write(L"Vardeko.dat.new", "left behind by a program that was killed");
    ASSERT_EQ(Replace(calls, path, "second"), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(ContentOf(path), "second");
    EXPECT_EQ(ContentOf(path + L".new"), "<missing>");
}

// Who may do what with the old file; then what the new one is given.
const wchar_t* oldRights = nullptr;
std::wstring newRights;

TEST(ReplaceWholeFile, KeepsTheAccessRightsThatAnAdministratorGave) {
    TPlatformCalls calls = SystemPlatformCalls();
    calls.GetNamedSecurityInfoW = [](auto, auto, auto, auto, auto, PACL* list, auto,
                                     PSECURITY_DESCRIPTOR* descriptor) -> DWORD {
        BOOL present = FALSE;
        BOOL defaulted = FALSE;
        return ConvertStringSecurityDescriptorToSecurityDescriptorW(oldRights, SDDL_REVISION_1, descriptor,
                                                                    nullptr) &&
                       GetSecurityDescriptorDacl(*descriptor, &present, list, &defaulted)
                   ? ERROR_SUCCESS
                   : GetLastError();
    };
    calls.SetNamedSecurityInfoW = [](auto path, auto, SECURITY_INFORMATION what, auto, auto, PACL list,
                                     auto) -> DWORD {
        newRights = (what & PROTECTED_DACL_SECURITY_INFORMATION) != 0 ? L"protected " : L"inherits ";
        newRights +=
            std::to_wstring(list->AceCount) + std::wstring(path).substr(std::wstring(path).rfind(L'\\'));
        return ERROR_ACCESS_DENIED;  // not a reason to keep the old content
    };
    const TTestFolder folder;
    ASSERT_EQ(Replace(calls, folder.At(L"a"), "first", TRightsOfNewFile::AsBefore), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(newRights, L"");
    for (const auto& [rights, expected] : {std::pair{L"D:AI(A;ID;FA;;;BA)(A;ID;FR;;;WD)", L""},
                                           std::pair{L"D:AI(A;;FR;;;BU)(A;ID;FA;;;BA)", L"inherits 2\\a"},
                                           std::pair{L"D:PAI(A;;FA;;;BA)", L"protected 1\\a"}}) {
        oldRights = rights;
        newRights.clear();
        EXPECT_EQ(Replace(calls, folder.At(L"a"), "second", TRightsOfNewFile::AsBefore),
                  DWORD{ERROR_SUCCESS});
        EXPECT_EQ(newRights, expected);
    }
}

TEST(ReplaceWholeFile, GoesOnAfterAPartialWrite) {
    const TTestFolder folder;
    TPlatformCalls calls = SystemPlatformCalls();
    calls.WriteFile = [](HANDLE file, const void* bytes, DWORD size, DWORD* written, OVERLAPPED*) {
        return ::WriteFile(file, bytes, size > 3 ? 3 : size, written, nullptr);
    };
    ASSERT_EQ(Replace(calls, folder.At(L"a"), "0123456789"), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(ContentOf(folder.At(L"a")), "0123456789");
}

TEST(ReadWholeFile, GivesTheSystemsCode) {
    const TPlatformCalls& calls = SystemPlatformCalls();
    const TTestFolder folder;
    std::string bytes = "before";
    EXPECT_EQ(ReadWholeFile(calls, folder.At(L"missing"), bytes), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(bytes, "");
    EXPECT_EQ(ReadWholeFile(calls, folder.At(L"no\\file"), bytes), DWORD{ERROR_PATH_NOT_FOUND});
    EXPECT_EQ(ReadWholeFile(calls, folder.Write(L"empty", ""), bytes), DWORD{ERROR_SUCCESS});
    TPlatformCalls failing = calls;
    failing.ReadFile = [](HANDLE, void*, DWORD, DWORD*, OVERLAPPED*) { return Fail(ERROR_CRC, FALSE); };
    EXPECT_EQ(ReadWholeFile(failing, folder.Write(L"x", "abc"), bytes), DWORD{ERROR_CRC});
}

TEST(AppendToFile, CreatesThenAppends) {
    const TPlatformCalls& calls = SystemPlatformCalls();
    const TTestFolder folder;
    EXPECT_EQ(AppendToFile(calls, folder.At(L"Error.log"), "one\r\n"), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(AppendToFile(calls, folder.At(L"Error.log"), "two\r\n"), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(ContentOf(folder.At(L"Error.log")), "one\r\ntwo\r\n");
    EXPECT_EQ(AppendToFile(calls, folder.At(L"missing\\Error.log"), "x"), DWORD{ERROR_PATH_NOT_FOUND});

    bool isHeld = true;
    const TWatchedCalls heldOnce([&](const char* call, std::wstring_view) -> DWORD {
        return call == std::string_view("CreateFile") && std::exchange(isHeld, false)
                   ? ERROR_SHARING_VIOLATION
                   : ERROR_SUCCESS;
    });
    EXPECT_EQ(AppendToFile(TWatchedCalls::Table(), folder.At(L"Error.log"), "three\r\n"),
              DWORD{ERROR_SUCCESS});
    EXPECT_EQ(ContentOf(folder.At(L"Error.log")), "one\r\ntwo\r\nthree\r\n");
}

TEST(Exists, FilesAreNoFolders) {
    const TPlatformCalls& calls = SystemPlatformCalls();
    const TTestFolder folder;
    const std::wstring file = folder.Write(L"a.txt", "");
    EXPECT_TRUE(FileExists(calls, file));
    EXPECT_FALSE(FolderExists(calls, file));
    EXPECT_TRUE(FolderExists(calls, folder.Path()));
    EXPECT_TRUE(FolderExists(calls, folder.Path() + L"\\"));
    EXPECT_TRUE(FolderExists(calls, folder.Path().substr(0, 2)));
    EXPECT_FALSE(FileExists(calls, folder.Path()));
    EXPECT_FALSE(FolderExists(calls, folder.At(L"missing")));
}

TEST(CreateFolders, MakesAllMissingParents) {
    const TPlatformCalls& calls = SystemPlatformCalls();
    const TTestFolder folder;
    EXPECT_TRUE(CreateFolders(calls, folder.At(L"a\\b\\c\\")));
    EXPECT_TRUE(FolderExists(calls, folder.At(L"a\\b\\c")));
    EXPECT_TRUE(CreateFolders(calls, folder.At(L"a\\b\\c")));
    EXPECT_TRUE(CreateFolders(calls, folder.At(L"d/e\\\\f")));
    EXPECT_TRUE(FolderExists(calls, folder.At(L"d\\e\\f")));
    EXPECT_TRUE(CreateFolders(calls, folder.Path().substr(0, 3)));
}

TEST(CreateFolders, FailsWhereNoFolderCanBe) {
    const TPlatformCalls& calls = SystemPlatformCalls();
    const TTestFolder folder;
    folder.Write(L"file", "");
    EXPECT_FALSE(CreateFolders(calls, folder.At(L"file")));
    EXPECT_FALSE(CreateFolders(calls, folder.At(L"file\\below\\it")));
    EXPECT_FALSE(CreateFolders(calls, L"Q:\\no\\such\\drive"));
    EXPECT_FALSE(CreateFolders(calls, L"\\\\no-such-server\\share\\a\\b"));
    EXPECT_FALSE(CreateFolders(calls, L""));
}

TEST(CreateFolders, AcceptsAFolderInWhichNothingMayBeMade) {
    const TTestFolder folder;
    TPlatformCalls calls = SystemPlatformCalls();
    calls.CreateDirectoryW = [](const wchar_t*, LPSECURITY_ATTRIBUTES) {
        return Fail(ERROR_ACCESS_DENIED, FALSE);
    };
    EXPECT_TRUE(CreateFolders(calls, folder.Path()));
    EXPECT_FALSE(CreateFolders(calls, folder.At(L"new")));
}

// The environment names a share that may be written to.
TEST(CreateFolders, WorksOnAShare) {
    wchar_t share[MAX_PATH] = {};
    if (GetEnvironmentVariableW(L"VARDEKO_TEST_SHARE", share, MAX_PATH) == 0) {
        GTEST_SKIP() << "needs a share, named by VARDEKO_TEST_SHARE";
    }
    const TPlatformCalls& calls = SystemPlatformCalls();
    const std::wstring host = std::wstring(share) + L"\\HOST";
    ASSERT_TRUE(FolderExists(calls, share));
    EXPECT_TRUE(CreateFolders(calls, host + L"\\drive_C"));
    EXPECT_TRUE(FolderExists(calls, host + L"\\drive_C"));
    const std::wstring file = host + L"\\drive_C\\a.txt";
    EXPECT_EQ(Replace(calls, file, "x"), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(ContentOf(file), "x");
    DeleteFileW(file.c_str());
    RemoveDirectoryW((host + L"\\drive_C").c_str());
    EXPECT_TRUE(RemoveDirectoryW(host.c_str()));
}

TEST(LongPaths, WorkForEveryHelper) {
    const TPlatformCalls& calls = SystemPlatformCalls();
    const TTestFolder folder;
    std::wstring deep = folder.Path();
    while (deep.size() < 600) {
        deep += L"\\" + std::wstring(100, L'\u00E4');
    }
    ASSERT_TRUE(CreateFolders(calls, deep));
    ASSERT_TRUE(FolderExists(calls, deep));
    const std::wstring file = deep + L"\\" + std::wstring(120, L'b') + L".txt";
    EXPECT_EQ(Replace(calls, file, "long"), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(AppendToFile(calls, file, " path"), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(ContentOf(file), "long path");
    EXPECT_TRUE(FileExists(calls, file));
}

// The test platform opens long paths in both forms, so only the text tells that the right one is used.
TEST(LongPaths, ReachTheSystemInTheExtendedForm) {
    static int plain;
    plain = 0;
    TPlatformCalls calls = SystemPlatformCalls();
    static constexpr auto note = [](const wchar_t* path) {
        plain += std::wstring_view(path).starts_with(L"\\\\?\\") ? 0 : 1;
    };
    calls.GetFileAttributesExW = [](const wchar_t* path, GET_FILEEX_INFO_LEVELS level, void* data) {
        note(path);
        return ::GetFileAttributesExW(path, level, data);
    };
    calls.CreateFileW = [](const wchar_t* path, DWORD access, DWORD sharing, LPSECURITY_ATTRIBUTES security,
                           DWORD disposition, DWORD flags, HANDLE) {
        note(path);
        return ::CreateFileW(path, access, sharing, security, disposition, flags, nullptr);
    };
    calls.CreateDirectoryW = [](const wchar_t* path, LPSECURITY_ATTRIBUTES security) {
        note(path);
        return ::CreateDirectoryW(path, security);
    };
    calls.MoveFileExW = [](const wchar_t* from, const wchar_t* to, DWORD flags) {
        note(from);
        note(to);
        return ::MoveFileExW(from, to, flags);
    };
    const TTestFolder folder;
    EXPECT_TRUE(CreateFolders(calls, folder.At(L"a\\b")));
    EXPECT_EQ(Replace(calls, folder.At(L"a\\b\\c"), "x"), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(AppendToFile(calls, folder.At(L"a\\b\\c"), "y"), DWORD{ERROR_SUCCESS});
    std::string bytes;
    EXPECT_EQ(ReadWholeFile(calls, folder.At(L"a\\b\\c"), bytes), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(plain, 0);
}

}  // namespace
