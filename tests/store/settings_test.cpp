#include "store/settings.h"

#include <gtest/gtest.h>

#include "store/credential_protection.h"
#include "support/problem_in.h"
#include "test_folder.h"

namespace {

// A protected text that no key made.
constexpr char kForeign[] = "/HsuRte+wdQImKS9cFjgPQ==";

class Settings : public testing::Test {
protected:
    void Write(const std::string& connect, const std::string& storedUser, const std::string& storedPassword) {
        folder.Write(L"NASConf.ini", "[CONFIG]\r\nNASDIR=d:\\Daten\r\nCONNECT=" + connect + "\r\nUSER=" +
                                         storedUser + "\r\nPASS=" + storedPassword + "\r\n; mine\r\n");
    }
    std::string File() const { return folder.Read(L"NASConf.ini").value_or(""); }

    const TPlatformCalls& calls = SystemPlatformCalls();
    TTestFolder folder;
    const std::wstring path = folder.At(L"NASConf.ini");
    const std::string user = ToUtf8(Protect(L"user"));
    const std::string password = ToUtf8(Protect(L"geheim"));
};

TEST_F(Settings, AreReadAsARunNeedsThem) {
    folder.Write(L"NASConf.ini",
                 "[config]\nnasdir=d:\\Backup\\Daten\\\\\nConnect=1\nUSER=" + user + "\nPASS=\n");
    const TSettings settings = LoadSettings(calls, path);
    EXPECT_EQ(settings.DestinationRoot(), L"D:\\BACKUP\\DATEN\\") << "one of the two is removed";
    EXPECT_TRUE(settings.CONNECT.value);
    EXPECT_EQ(settings.USER.value.text, L"user");
    EXPECT_EQ(settings.PASS.value.text, L"");

    EXPECT_EQ(settings.PARALLEL, 8U);
    for (const auto& [value, read] : {std::pair{"1", 1U}, {"32", 32U}, {"33", 8U}, {"0", 8U}, {"two", 8U}}) {
        folder.Write(L"NASConf.ini", std::string("[CONFIG]\nPARALLEL=") + value);
        EXPECT_EQ(LoadSettings(calls, path).PARALLEL, read) << value;
    }

    const TSettings none = LoadSettings(calls, folder.At(L"none\\NASConf.ini"));
    EXPECT_EQ(none.DestinationRoot(), L"");
    EXPECT_FALSE(none.CONNECT.value);
}

TEST_F(Settings, ARunIsRefusedForWhatItNeeds) {
    const std::wstring why =
        L"Failed to decrypt the data. The data could not be decrypted using the provided key. "
        L"(NTE_BAD_DATA)!";
    const auto load = [&] { (void)LoadSettings(calls, path); };
    Write("1", kForeign, kForeign);
    EXPECT_EQ(ProblemIn(load),
              (TProblem{.what = TProblemKind::UserNotDecrypted, .path = path, .detail = why}));
    Write("1", user, kForeign);
    EXPECT_EQ(ProblemIn(load),
              (TProblem{.what = TProblemKind::PasswordNotDecrypted, .path = path, .detail = why}));
    EXPECT_EQ(
        ProblemIn([&] { (void)LoadSettings(calls, folder.Path()); }),
        (TProblem{.what = TProblemKind::FileNotRead, .path = folder.Path(), .code = ERROR_ACCESS_DENIED}));

    // Without a logon the credentials are not even looked at, and so not written either.
    Write("0", user, kForeign);
    const std::string before = File();
    const TSettings settings = LoadSettings(calls, path);
    EXPECT_EQ(settings.USER.value.text, L"");
    EXPECT_EQ(WriteSettings(calls, path, settings), std::nullopt);
    EXPECT_EQ(File(), before);
}

TEST_F(Settings, WhatIsNotKnownStaysInTheFileUntilAnotherIsEntered) {
    const std::tuple<std::string, std::string, TProblemKind> cases[] = {
        {kForeign, password, TProblemKind::UserUnknown},
        {user, kForeign, TProblemKind::PasswordUnknown},
        {kForeign, kForeign, TProblemKind::CredentialsUnknown}};
    for (const auto& [storedUser, storedPassword, kind] : cases) {
        Write("0", storedUser, storedPassword);
        TSettings settings;
        EXPECT_EQ(ReadSettings(calls, path, settings).value_or(TProblem{}).what, kind);
        settings.USER.value.text = L"user";
        settings.USER.known = true;
        EXPECT_EQ(WriteSettings(calls, path, settings), std::nullopt);
        const std::string after = File();
        Write("0", user, storedPassword);
        EXPECT_EQ(after, File());
    }
    TSettings settings;
    EXPECT_EQ(ReadSettings(calls, folder.Path(), settings), (TProblem{.what = TProblemKind::SettingsNotRead,
                                                                      .path = folder.Path(),
                                                                      .code = ERROR_ACCESS_DENIED}));
    EXPECT_FALSE(settings.NASDIR.known || settings.CONNECT.known || settings.USER.known ||
                 settings.PASS.known);
}

TEST_F(Settings, AFileThatCannotBeReadOrReplacedIsNamed) {
    const TSettings settings = LoadSettings(calls, path);
    EXPECT_EQ(WriteSettings(calls, folder.Path(), settings), (TProblem{.what = TProblemKind::SettingsNotRead,
                                                                       .path = folder.Path(),
                                                                       .code = ERROR_ACCESS_DENIED}));
    const std::wstring nowhere = folder.At(L"none\\NASConf.ini");
    EXPECT_EQ(
        WriteSettings(calls, nowhere, settings),
        (TProblem{.what = TProblemKind::SettingsNotSaved, .path = nowhere, .code = ERROR_PATH_NOT_FOUND}));
}

// Short texts lie in the object itself and longer ones elsewhere.
TEST(Secret, LeavesNothingBehindWhereItWas) {
    std::wstring plain = L"geheim";
    TSecret first(std::move(plain));
    const TSecret second(std::move(first));
    EXPECT_EQ(second.text, L"geheim");
    EXPECT_EQ(std::wstring_view(plain.data(), 6), std::wstring(6, L'\0'));  // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(std::wstring_view(first.text.data(), 6),
              std::wstring(6, L'\0'));  // NOLINT(bugprone-use-after-move)
}

}  // namespace
