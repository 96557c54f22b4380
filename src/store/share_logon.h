// The logon to the share that holds the destination.
#pragma once

#include <windows.h>

#include <atomic>
#include <string>
#include <string_view>

#include "support/platform_calls.h"

// Opens a network connection as another user than the one logged on to Windows, and remembers what the system
// is asked to cancel at the end. May be used by several threads: an attempt to connect can take a minute.
class TShareLogon {
public:
    explicit TShareLogon(const TPlatformCalls& calls) : calls_(calls) {}
    TShareLogon(const TShareLogon&) = delete;
    TShareLogon& operator=(const TShareLogon&) = delete;

    // Connects to the remote name without a drive letter; the result is the system's error code, 0 for
    // success. User name and password are empty afterwards, whatever the result, and wiped from memory.
    DWORD Connect(std::wstring_view remoteName, std::wstring& user, std::wstring& password);

    // Asks the system to cancel the connection by its local name, which is empty after an attempt
    // to connect and absent before one. As the connection has no local device the system does not find it:
    // it is left to Windows to close, and the answer is an error code. Kept so deliberately.
    DWORD Cancel();

    // What the last Connect or Cancel returned; 0 before the first.
    DWORD LastResult() const { return lastResult_; }

private:
    const TPlatformCalls& calls_;
    std::atomic<bool> attempted_ = false;
    std::atomic<DWORD> lastResult_ = NO_ERROR;
};
