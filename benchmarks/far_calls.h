// A destination that is far away: each call to it sleeps in the thread that makes it.
#pragma once

#include <windows.h>

#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <type_traits>

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

inline bool IsFarPath(LPCWSTR path) {
    return path != nullptr && std::wstring_view(path).find(farPart) != std::wstring_view::npos;
}

inline bool SleepIfFar(LPCWSTR path) {
    const bool isFar = IsFarPath(path);
    Sleep(isFar ? kFarSleep : 0);
    return isFar;
}

// A call that takes longer when one of its paths, or its handle, is far.
template <auto Member, typename Function>
struct TSlowCall;

template <auto Member, typename Result, typename... Arguments>
struct TSlowCall<Member, Result(WINAPI*)(Arguments...)> {
    static Result WINAPI Call(Arguments... arguments) {
        if ((IsFar(arguments) || ...)) {
            Sleep(kFarSleep);
        }
        return (SystemPlatformCalls().*Member)(arguments...);
    }

private:
    template <typename Argument>
    static bool IsFar(Argument argument) {
        if constexpr (std::is_same_v<Argument, LPCWSTR>) {
            return IsFarPath(argument);
        } else if constexpr (std::is_same_v<Argument, HANDLE>) {
            return TFarHandles::IsFar(argument);
        } else {
            return false;
        }
    }
};

template <auto... Members>
void Slow(TPlatformCalls& calls) {
    ((calls.*Members = &TSlowCall<Members, std::remove_reference_t<decltype(calls.*Members)>>::Call), ...);
}

inline TPlatformCalls SleepingCalls() {
    TPlatformCalls calls = SystemPlatformCalls();
    Slow<&TPlatformCalls::GetFileAttributesExW, &TPlatformCalls::SetFileAttributesW,
         &TPlatformCalls::CopyFileExW, &TPlatformCalls::MoveFileExW, &TPlatformCalls::DeleteFileW,
         &TPlatformCalls::CreateDirectoryW, &TPlatformCalls::ReadFile, &TPlatformCalls::WriteFile,
         &TPlatformCalls::GetFileSizeEx, &TPlatformCalls::GetFileInformationByHandle,
         &TPlatformCalls::FlushFileBuffers, &TPlatformCalls::GetFileTime, &TPlatformCalls::SetFileTime,
         &TPlatformCalls::SetFileInformationByHandle>(calls);
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
    calls.CloseHandle = [](HANDLE file) -> BOOL {
        TFarHandles::Remove(file);
        return CloseHandle(file);
    };
    return calls;
}
