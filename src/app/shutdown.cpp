#include "app/shutdown.h"

#include "support/handles.h"

bool ShutdownSystem(const TPlatformCalls& calls, const std::wstring& machine, const std::wstring& message,
                    unsigned timeout, bool force, bool reboot) {
    TKernelHandle token;
    if (!calls.OpenProcessToken(GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES | TOKEN_QUERY,
                                token.Receive())) {
        return false;
    }
    TOKEN_PRIVILEGES privileges{};
    privileges.PrivilegeCount = 1;
    privileges.Privileges[0].Attributes = SE_PRIVILEGE_ENABLED;
    if (!calls.LookupPrivilegeValueW(nullptr, L"SeShutdownPrivilege", &privileges.Privileges[0].Luid)) {
        return false;
    }
    // The call succeeds also when the privilege was not granted; only the last error tells.
    SetLastError(ERROR_SUCCESS);
    calls.AdjustTokenPrivileges(token.Get(), FALSE, &privileges, 0, nullptr, nullptr);
    if (GetLastError() != ERROR_SUCCESS) {
        return false;
    }
    std::wstring machineName = machine;
    std::wstring messageText = message;
    return calls.InitiateSystemShutdownW(machineName.empty() ? nullptr : machineName.data(),
                                         messageText.data(), timeout, force, reboot) != FALSE;
}
