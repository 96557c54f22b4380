#include "store/share_logon.h"

#include "support/wipe.h"

DWORD TShareLogon::Connect(std::wstring_view remoteName, std::wstring& user, std::wstring& password) {
    remoteName_ = remoteName;
    record_ = {};
    record_.dwScope = RESOURCE_GLOBALNET;
    record_.dwType = RESOURCETYPE_DISK;
    record_.dwUsage = RESOURCEUSAGE_CONNECTABLE;
    record_.lpLocalName = localName_;
    record_.lpRemoteName = remoteName_.data();
    lastResult_ =
        calls_.WNetAddConnection2W(&record_, password.c_str(), user.c_str(), CONNECT_UPDATE_PROFILE);
    WipeText(password);
    WipeText(user);
    return lastResult_;
}

DWORD TShareLogon::Cancel() {
    lastResult_ = calls_.WNetCancelConnection2W(record_.lpLocalName, CONNECT_UPDATE_PROFILE, TRUE);
    return lastResult_;
}
