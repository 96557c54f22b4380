// A destination that is far away: each call to it sleeps in the thread that makes it.
#pragma once

#include <windows.h>

#include <mutex>
#include <set>
#include <string>
#include <string_view>

#include "support/platform_calls.h"

inline constexpr DWORD kFarSleep = 2;  // milliseconds

// Paths with this in them are far away.
inline std::wstring farPart;

// Handles of far files and listings.
class TFarHandles {
public:
    static HANDLE Add(HANDLE handle, bool isFar) {
        if (isFar && handle != INVALID_HANDLE_VALUE) {
            const std::scoped_lock lock(mutex_);
            handles_.insert(handle);
        }
        return handle;
    }
    static void SleepIfFar(HANDLE handle) {
        if (IsFar(handle)) {
            Sleep(kFarSleep);
        }
    }
    static bool IsFar(HANDLE handle) {
        const std::scoped_lock lock(mutex_);
        return handles_.contains(handle);
    }
    static void Remove(HANDLE handle) {
        SleepIfFar(handle);
        const std::scoped_lock lock(mutex_);
        handles_.erase(handle);
    }

private:
    static inline std::mutex mutex_;
    static inline std::set<HANDLE> handles_;
};

inline bool SleepIfFar(LPCWSTR path) {
    const bool isFar = std::wstring_view(path).find(farPart) != std::wstring_view::npos;
    Sleep(isFar ? kFarSleep : 0);
    return isFar;
}

// Listings, and files that are read.
inline TPlatformCalls SleepingCalls() {
    TPlatformCalls calls = SystemPlatformCalls();
    calls.FindFirstFileExW = [](LPCWSTR path, FINDEX_INFO_LEVELS level, LPVOID data, FINDEX_SEARCH_OPS search,
                                LPVOID filter, DWORD flags) -> HANDLE {
        const bool isFar = SleepIfFar(path);
        return TFarHandles::Add(FindFirstFileExW(path, level, data, search, filter, flags), isFar);
    };
    calls.FindNextFileW = [](HANDLE find, LPWIN32_FIND_DATAW data) -> BOOL {
        const BOOL found = FindNextFileW(find, data);
        // Entries come many at a time; only their end is asked for once more.
        if (!found) {
            TFarHandles::SleepIfFar(find);
            SetLastError(ERROR_NO_MORE_FILES);
        }
        return found;
    };
    calls.FindClose = [](HANDLE find) -> BOOL {
        TFarHandles::Remove(find);
        return FindClose(find);
    };
    calls.CreateFileW = [](LPCWSTR path, DWORD access, DWORD sharing, LPSECURITY_ATTRIBUTES security,
                           DWORD disposition, DWORD flags, HANDLE pattern) -> HANDLE {
        const bool isFar = SleepIfFar(path);
        return TFarHandles::Add(CreateFileW(path, access, sharing, security, disposition, flags, pattern),
                                isFar);
    };
    calls.GetFileSizeEx = [](HANDLE file, PLARGE_INTEGER size) -> BOOL {
        TFarHandles::SleepIfFar(file);
        return GetFileSizeEx(file, size);
    };
    calls.GetFileTime = [](HANDLE file, LPFILETIME created, LPFILETIME read, LPFILETIME written) -> BOOL {
        TFarHandles::SleepIfFar(file);
        return GetFileTime(file, created, read, written);
    };
    calls.ReadFile = [](HANDLE file, LPVOID bytes, DWORD size, LPDWORD read,
                        LPOVERLAPPED overlapped) -> BOOL {
        TFarHandles::SleepIfFar(file);
        return ReadFile(file, bytes, size, read, overlapped);
    };
    calls.CloseHandle = [](HANDLE file) -> BOOL {
        TFarHandles::Remove(file);
        return CloseHandle(file);
    };
    return calls;
}
