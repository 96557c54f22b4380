// Platform calls for shutting down that only write down what was asked of them.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "support/platform_calls.h"
#include "support/text.h"

struct TFakeShutdown {
    // Every call with its arguments, in order.
    inline static std::vector<std::string> asked;
    // What fails: the name of a call, or "privilege" for one that is not granted.
    inline static std::string failing;
    // What Windows shows its user for now when it is to shut down.
    inline static std::wstring reason;

    static void Reset(const std::string& whatFails = "") {
        asked.clear();
        reason.clear();
        failing = whatFails;
    }

    static TPlatformCalls Calls() {
        TPlatformCalls calls = SystemPlatformCalls();
        calls.OpenProcessToken = &OpenProcessToken;
        calls.LookupPrivilegeValueW = &LookupPrivilegeValueW;
        calls.AdjustTokenPrivileges = &AdjustTokenPrivileges;
        calls.InitiateSystemShutdownW = &InitiateSystemShutdownW;
        calls.ShutdownBlockReasonCreate = [](HWND, LPCWSTR text) -> BOOL {
            reason = text;
            return TRUE;
        };
        calls.ShutdownBlockReasonDestroy = [](HWND) -> BOOL {
            reason.clear();
            return TRUE;
        };
        return calls;
    }

private:
    static BOOL Answer(const std::string& call, const std::string& arguments) {
        asked.push_back(call + " " + arguments);
        SetLastError(failing == call ? ERROR_ACCESS_DENIED : ERROR_SUCCESS);
        return failing != call;
    }
    static BOOL WINAPI OpenProcessToken(HANDLE process, DWORD access, PHANDLE token) {
        // A real handle: whoever asks closes it.
        *token = CreateEventW(nullptr, FALSE, FALSE, nullptr);
        return Answer("OpenProcessToken",
                      (process == GetCurrentProcess() ? "self " : "other ") + std::to_string(access));
    }
    static BOOL WINAPI LookupPrivilegeValueW(LPCWSTR system, LPCWSTR name, PLUID identifier) {
        *identifier = {4711, 0};
        return Answer("LookupPrivilegeValueW", (system == nullptr ? "local " : "remote ") + ToUtf8(name));
    }
    static BOOL WINAPI AdjustTokenPrivileges(HANDLE, BOOL disableAll, PTOKEN_PRIVILEGES state, DWORD length,
                                             PTOKEN_PRIVILEGES previous, PDWORD) {
        const LUID_AND_ATTRIBUTES& entry = state->Privileges[0];
        const BOOL done =
            Answer("AdjustTokenPrivileges",
                   std::to_string(disableAll) + " " + std::to_string(state->PrivilegeCount) + " " +
                       std::to_string(entry.Luid.LowPart) + " " + std::to_string(entry.Attributes) + " " +
                       std::to_string(length) + (previous == nullptr ? "" : " previous"));
        if (failing == "privilege") {
            SetLastError(ERROR_NOT_ALL_ASSIGNED);
        }
        return done;
    }
    static BOOL WINAPI InitiateSystemShutdownW(LPWSTR machine, LPWSTR message, DWORD timeout, BOOL force,
                                               BOOL reboot) {
        return Answer("InitiateSystemShutdownW", (machine == nullptr ? "(none)" : ToUtf8(machine)) + ", " +
                                                     ToUtf8(message) + ", " + std::to_string(timeout) + ", " +
                                                     std::to_string(force) + ", " + std::to_string(reboot));
    }
};
