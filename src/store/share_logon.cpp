#include "store/share_logon.h"

#include "support/wipe.h"

DWORD TShareLogon::Connect(std::wstring_view remoteName, std::wstring& user, std::wstring& password) {
    std::wstring remote(remoteName);
    wchar_t noLocalName[1] = {};
    NETRESOURCEW record{};
    record.dwScope = RESOURCE_GLOBALNET;
    record.dwType = RESOURCETYPE_DISK;
    record.dwUsage = RESOURCEUSAGE_CONNECTABLE;
    record.lpLocalName = noLocalName;
    record.lpRemoteName = remote.data();
    attempted_ = true;
    const DWORD result =
        calls_.WNetAddConnection2W(&record, password.c_str(), user.c_str(), CONNECT_UPDATE_PROFILE);
    WipeText(password);
    WipeText(user);
    lastResult_ = result;
    return result;
}

DWORD TShareLogon::Cancel() {
    const DWORD result =
        calls_.WNetCancelConnection2W(attempted_ ? L"" : nullptr, CONNECT_UPDATE_PROFILE, TRUE);
    lastResult_ = result;
    return result;
}
