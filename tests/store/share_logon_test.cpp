#include "store/share_logon.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace {

struct TConnectCall {
    NETRESOURCEW record{};
    std::wstring localName, remoteName, password, user;
    DWORD flags = 0;
};

struct TCancelCall {
    std::optional<std::wstring> name;
    DWORD flags = 0;
    BOOL force = FALSE;
};

TConnectCall connectCall;
TCancelCall cancelCall;

TPlatformCalls RecordingCalls() {
    TPlatformCalls calls = SystemPlatformCalls();
    calls.WNetAddConnection2W = [](NETRESOURCEW* record, const wchar_t* password, const wchar_t* user,
                                   DWORD flags) -> DWORD {
        connectCall = {*record, record->lpLocalName, record->lpRemoteName, password, user, flags};
        return ERROR_LOGON_FAILURE;
    };
    calls.WNetCancelConnection2W = [](const wchar_t* name, DWORD flags, BOOL force) -> DWORD {
        cancelCall = {name == nullptr ? std::nullopt : std::optional<std::wstring>(name), flags, force};
        return ERROR_NOT_CONNECTED;
    };
    return calls;
}

TEST(ShareLogon, ConnectsWithoutADriveLetter) {
    const TPlatformCalls calls = RecordingCalls();
    TShareLogon logon(calls);
    std::wstring user = L"NAS\\sicherung";
    std::wstring password = L"geheim-\u20AC";
    EXPECT_EQ(logon.Connect(L"\\\\NAS\\BACKUP", user, password), DWORD{ERROR_LOGON_FAILURE});
    EXPECT_EQ(logon.LastResult(), DWORD{ERROR_LOGON_FAILURE});
    EXPECT_EQ(connectCall.record.dwScope, DWORD{RESOURCE_GLOBALNET});
    EXPECT_EQ(connectCall.record.dwType, DWORD{RESOURCETYPE_DISK});
    EXPECT_EQ(connectCall.record.dwDisplayType, 0u);
    EXPECT_EQ(connectCall.record.dwUsage, DWORD{RESOURCEUSAGE_CONNECTABLE});
    EXPECT_EQ(connectCall.record.lpComment, nullptr);
    EXPECT_EQ(connectCall.record.lpProvider, nullptr);
    EXPECT_EQ(connectCall.localName, L"");
    EXPECT_EQ(connectCall.remoteName, L"\\\\NAS\\BACKUP");
    EXPECT_EQ(connectCall.user, L"NAS\\sicherung");
    EXPECT_EQ(connectCall.password, L"geheim-\u20AC");
    EXPECT_EQ(connectCall.flags, DWORD{CONNECT_UPDATE_PROFILE});
}

TEST(ShareLogon, NoSecretOutlivesTheAttempt) {
    const TPlatformCalls calls = RecordingCalls();
    TShareLogon logon(calls);
    std::wstring user = L"sicherung";
    std::wstring password = L"a password that has memory of its own";
    const wchar_t* const memory = password.data();
    logon.Connect(L"D:\\BACKUP", user, password);
    EXPECT_EQ(user, L"");
    EXPECT_EQ(password, L"");
    ASSERT_EQ(password.data(), memory);
    for (std::size_t index = 0; index < password.capacity(); ++index) {
        ASSERT_EQ(memory[index], L'\0');
    }
    // The next attempt passes empty texts, not absent ones.
    logon.Connect(L"D:\\BACKUP", user, password);
    EXPECT_EQ(connectCall.user, L"");
    EXPECT_EQ(connectCall.password, L"");
}

TEST(ShareLogon, CancelNamesTheRecordsLocalName) {
    const TPlatformCalls calls = RecordingCalls();
    TShareLogon logon(calls);
    EXPECT_EQ(logon.Cancel(), DWORD{ERROR_NOT_CONNECTED});
    EXPECT_EQ(cancelCall.name, std::nullopt);
    EXPECT_EQ(cancelCall.flags, DWORD{CONNECT_UPDATE_PROFILE});
    EXPECT_TRUE(cancelCall.force);
    std::wstring user;
    std::wstring password;
    logon.Connect(L"\\\\NAS\\BACKUP", user, password);
    EXPECT_EQ(logon.Cancel(), DWORD{ERROR_NOT_CONNECTED});
    EXPECT_EQ(cancelCall.name, L"");
    EXPECT_EQ(logon.LastResult(), DWORD{ERROR_NOT_CONNECTED});
}

}  // namespace
