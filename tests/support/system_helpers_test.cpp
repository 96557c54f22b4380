#include "support/system_helpers.h"

#include <gtest/gtest.h>

#include "support/handles.h"
#include "test_folder.h"

namespace {

// Puts an empty key of the registry in the place of HKEY_LOCAL_MACHINE, for this process only.
class TOtherMachine {
public:
    TOtherMachine() {
        RegCreateKeyExW(HKEY_CURRENT_USER, kKey, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS, nullptr,
                        key_.Receive(), nullptr);
        RegOverridePredefKey(HKEY_LOCAL_MACHINE, key_.Get());
    }
    TOtherMachine(const TOtherMachine&) = delete;
    TOtherMachine& operator=(const TOtherMachine&) = delete;
    ~TOtherMachine() {
        RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
        key_.Reset();
        RegDeleteTreeW(HKEY_CURRENT_USER, kKey);
    }

    void Set(const wchar_t* keyPath, const wchar_t* name, std::wstring_view text) const {
        const std::wstring terminated(text);
        RegSetKeyValueW(key_.Get(), keyPath, name, REG_SZ, terminated.c_str(),
                        static_cast<DWORD>((terminated.size() + 1) * sizeof(wchar_t)));
    }

private:
    static constexpr wchar_t kKey[] = L"Software\\VardekoTest";
    TRegistryKey key_;
};

constexpr wchar_t kComputerNameKey[] = L"SYSTEM\\CurrentControlSet\\Control\\ComputerName\\ComputerName";
constexpr wchar_t kShellFoldersKey[] =
    L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\explorer\\Shell Folders";

TEST(HostName, ComesFromTheRegistryAsItStands) {
    const TOtherMachine machine;
    machine.Set(kComputerNameKey, L"ComputerName", L" M\u00FCllers-Pc ");
    EXPECT_EQ(HostName(), L" M\u00FCllers-Pc ");
}

TEST(HostName, ComesFromTheSystemOtherwise) {
    const TOtherMachine machine;
    // Where the test platform's GetComputerNameW looks.
    machine.Set(L"SYSTEM\\CurrentControlSet\\Control\\ComputerName\\ActiveComputerName", L"ComputerName",
                L"ACTIVE");
    wchar_t name[MAX_COMPUTERNAME_LENGTH + 1] = {};
    DWORD length = MAX_COMPUTERNAME_LENGTH + 1;
    ASSERT_TRUE(GetComputerNameW(name, &length));
    EXPECT_EQ(HostName(), name);
    machine.Set(kComputerNameKey, L"AnotherValue", L"x");
    EXPECT_EQ(HostName(), name);
}

TEST(RegistryText, IsEmptyWithoutAText) {
    const TOtherMachine machine;
    machine.Set(L"A\\B", L"Text", std::wstring(3000, L'x'));
    machine.Set(L"A\\B", L"Empty", L"");
    const DWORD number = 7;
    RegSetKeyValueW(HKEY_LOCAL_MACHINE, L"A\\B", L"Number", REG_DWORD, &number, sizeof number);
    EXPECT_EQ(RegistryText(HKEY_LOCAL_MACHINE, L"A\\B", L"Text"), std::wstring(3000, L'x'));
    EXPECT_EQ(RegistryText(HKEY_LOCAL_MACHINE, L"\\A\\B", L"Text").size(), 3000u);
    EXPECT_EQ(RegistryText(HKEY_LOCAL_MACHINE, L"A\\B", L"Empty"), L"");
    EXPECT_EQ(RegistryText(HKEY_LOCAL_MACHINE, L"A\\B", L"Missing"), L"");
    EXPECT_EQ(RegistryText(HKEY_LOCAL_MACHINE, L"A\\B", L"Number"), L"");
    EXPECT_EQ(RegistryText(HKEY_LOCAL_MACHINE, L"A\\Missing", L"Text"), L"");
}

TEST(Folders, ConfigurationFolderIsMadeBelowTheCommonDataFolder) {
    const TPlatformCalls& calls = SystemPlatformCalls();
    const TTestFolder folder;
    const TOtherMachine machine;
    EXPECT_EQ(CommonDataFolder(), L"");
    machine.Set(kShellFoldersKey, L"Common AppData", folder.At(L"new\\ProgramData\\"));
    EXPECT_EQ(CommonDataFolder(), folder.At(L"new\\ProgramData"));
    EXPECT_EQ(ConfigurationFolder(calls), folder.At(L"new\\ProgramData\\Vardeko"));
    EXPECT_TRUE(FolderExists(calls, folder.At(L"new\\ProgramData\\Vardeko")));

    folder.Write(L"file", "");
    machine.Set(kShellFoldersKey, L"Common AppData", folder.At(L"file"));
    EXPECT_EQ(ConfigurationFolder(calls), L"");
}

TEST(Folders, TemporaryFolderExistsAndEndsWithoutASeparator) {
    EXPECT_FALSE(TemporaryFolder().ends_with(L'\\'));
    EXPECT_TRUE(FolderExists(SystemPlatformCalls(), TemporaryFolder()));
}

TEST(MoveAside, TakesTheFirstFreeNumber) {
    const TPlatformCalls& calls = SystemPlatformCalls();
    const TTestFolder folder;
    const auto moveAside = [&](std::wstring_view name) {
        folder.Write(name, "newest");
        return MoveAsideWithNumber(calls, folder.At(name));
    };
    folder.Write(L"a #001.txt", "1");
    folder.Write(L"a #002.txt", "2");
    folder.Write(L"a #004.txt", "4");
    EXPECT_TRUE(moveAside(L"a.txt"));
    EXPECT_FALSE(FileExists(calls, folder.At(L"a.txt")));
    EXPECT_EQ(ContentOf(folder.At(L"a #003.txt")), "newest");
    EXPECT_TRUE(moveAside(L"a.txt"));
    EXPECT_EQ(ContentOf(folder.At(L"a #004.txt")), "4");
    EXPECT_EQ(ContentOf(folder.At(L"a #005.txt")), "newest");
    EXPECT_TRUE(moveAside(L"data"));
    EXPECT_EQ(ContentOf(folder.At(L"data #001")), "newest");
    EXPECT_TRUE(moveAside(L"a.b.txt"));
    EXPECT_EQ(ContentOf(folder.At(L"a.b #001.txt")), "newest");
}

TEST(MoveAside, HasNothingToDoWithoutAFile) {
    const TPlatformCalls& calls = SystemPlatformCalls();
    const TTestFolder folder;
    EXPECT_TRUE(MoveAsideWithNumber(calls, folder.At(L"missing.txt")));
    EXPECT_TRUE(MoveAsideWithNumber(calls, folder.At(L"missing\\missing.txt")));
    ASSERT_TRUE(CreateFolders(calls, folder.At(L"folder")));
    EXPECT_TRUE(MoveAsideWithNumber(calls, folder.At(L"folder")));
    EXPECT_TRUE(FolderExists(calls, folder.At(L"folder")));
}

TEST(MoveAside, FailsWhenTheFileStaysWhereItIs) {
    const TTestFolder folder;
    const std::wstring path = folder.Write(L"a.txt", "");
    TPlatformCalls calls = SystemPlatformCalls();
    calls.MoveFileW = [](const wchar_t*, const wchar_t*) -> BOOL {
        SetLastError(ERROR_SHARING_VIOLATION);
        return FALSE;
    };
    calls.Sleep = [](DWORD) {};
    EXPECT_FALSE(MoveAsideWithNumber(calls, path));
    // A share that does not answer is not an absent file: the copy that follows would overwrite it.
    calls = SystemPlatformCalls();
    calls.GetFileAttributesExW = [](const wchar_t*, GET_FILEEX_INFO_LEVELS, void*) -> BOOL {
        SetLastError(ERROR_UNEXP_NET_ERR);
        return FALSE;
    };
    EXPECT_FALSE(MoveAsideWithNumber(calls, path));
    EXPECT_TRUE(FileExists(SystemPlatformCalls(), path));
}

TEST(MoveAside, ManyCopiesCostAListingNotAQuestionEach) {
    const TTestFolder folder;
    for (unsigned number = 1; number <= 1001; ++number) {
        folder.Write(NumberedName(L"Bericht.doc", number), "");
    }
    // Names that only look like copies of it.
    for (const wchar_t* name : {L"Bericht #1002.docx", L"Bericht #01002.doc", L"Bericht #.doc",
                                L"Bericht #10x2.doc", L"Bericht #99999999999999999999.doc"}) {
        folder.Write(name, "");
    }
    const std::wstring path = folder.Write(L"BERICHT.doc", "newest");
    static int questions;
    questions = 0;
    TPlatformCalls calls = SystemPlatformCalls();
    calls.GetFileAttributesExW = [](const wchar_t* name, GET_FILEEX_INFO_LEVELS level, void* data) {
        ++questions;
        return ::GetFileAttributesExW(name, level, data);
    };
    EXPECT_TRUE(MoveAsideWithNumber(calls, path));
    EXPECT_EQ(ContentOf(folder.At(L"BERICHT #1002.doc")), "newest");
    EXPECT_LT(questions, 15);

    // Without a listing it only takes longer.
    calls.FindFirstFileExW = [](const wchar_t*, FINDEX_INFO_LEVELS, void*, FINDEX_SEARCH_OPS, void*, DWORD) {
        SetLastError(ERROR_ACCESS_DENIED);
        return INVALID_HANDLE_VALUE;
    };
    folder.Write(L"BERICHT.doc", "again");
    EXPECT_TRUE(MoveAsideWithNumber(calls, path));
    EXPECT_EQ(ContentOf(folder.At(L"BERICHT #1003.doc")), "again");
}

TEST(MoveAside, WorksOnLongPaths) {
    const TPlatformCalls& calls = SystemPlatformCalls();
    const TTestFolder folder;
    const std::wstring deep = folder.At(std::wstring(120, L'x')) + L"\\" + std::wstring(120, L'y');
    ASSERT_TRUE(CreateFolders(calls, deep));
    const std::wstring name =
        deep.substr(folder.Path().size() + 1) + L"\\" + std::wstring(60, L'z') + L".txt";
    EXPECT_TRUE(MoveAsideWithNumber(calls, folder.Write(name, "x")));
    EXPECT_EQ(ContentOf(NumberedName(folder.At(name), 1)), "x");
}

}  // namespace
