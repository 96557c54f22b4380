// A table of platform calls that counts every call and lets one of them fail.
#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <string_view>

#include "support/platform_calls.h"

// What a test may do before a call reaches the system. One at a time: the table's functions have no room for
// a context of their own. The scan's thread and the test's thread both call.
class TWatchedCalls {
public:
    // `before` is told the call's name and its first path (empty for calls by handle), and answers the error
    // with which it fails, or ERROR_SUCCESS to let it through.
    using TBefore = std::function<DWORD(const char* call, std::wstring_view path)>;

    explicit TWatchedCalls(TBefore before) { Before() = std::move(before); }
    TWatchedCalls(const TWatchedCalls&) = delete;
    TWatchedCalls& operator=(const TWatchedCalls&) = delete;
    ~TWatchedCalls() { Before() = nullptr; }

    static const TPlatformCalls& Table() {
        static const TPlatformCalls table = [] {
            TPlatformCalls calls = SystemPlatformCalls();
            Watch<&TPlatformCalls::FindFirstFileExW>(calls, "FindFirstFileEx");
            Watch<&TPlatformCalls::FindNextFileW>(calls, "FindNextFile");
            Watch<&TPlatformCalls::GetFileAttributesExW>(calls, "GetFileAttributesEx");
            Watch<&TPlatformCalls::SetFileAttributesW>(calls, "SetFileAttributes");
            Watch<&TPlatformCalls::CopyFileExW>(calls, "CopyFileEx");
            Watch<&TPlatformCalls::MoveFileW>(calls, "MoveFile");
            Watch<&TPlatformCalls::MoveFileExW>(calls, "MoveFileEx");
            Watch<&TPlatformCalls::DeleteFileW>(calls, "DeleteFile");
            Watch<&TPlatformCalls::CreateDirectoryW>(calls, "CreateDirectory");
            Watch<&TPlatformCalls::CreateFileW>(calls, "CreateFile");
            Watch<&TPlatformCalls::ReadFile>(calls, "ReadFile");
            Watch<&TPlatformCalls::WriteFile>(calls, "WriteFile");
            Watch<&TPlatformCalls::SetFilePointerEx>(calls, "SetFilePointerEx");
            Watch<&TPlatformCalls::GetFileSizeEx>(calls, "GetFileSizeEx");
            Watch<&TPlatformCalls::GetFileInformationByHandle>(calls, "GetFileInformationByHandle");
            Watch<&TPlatformCalls::FlushFileBuffers>(calls, "FlushFileBuffers");
            Watch<&TPlatformCalls::GetFileTime>(calls, "GetFileTime");
            Watch<&TPlatformCalls::SetFileTime>(calls, "SetFileTime");
            Watch<&TPlatformCalls::SetFileInformationByHandle>(calls, "SetFileInformationByHandle");
            Watch<&TPlatformCalls::CloseHandle>(calls, "CloseHandle");
            // Whoever refuses something for a moment has changed his mind when the call comes again.
            calls.Sleep = [](DWORD) {};
            return calls;
        }();
        return table;
    }

private:
    static TBefore& Before() {
        static TBefore before;
        return before;
    }

    template <typename First, typename... Rest>
    static std::wstring_view FirstPath(First first, Rest...) {
        if constexpr (std::is_same_v<First, LPCWSTR>) {
            return first;
        } else {
            return {};
        }
    }

    template <auto Member, typename Function>
    struct THook;

    template <auto Member, typename Result, typename... Arguments>
    struct THook<Member, Result(WINAPI*)(Arguments...)> {
        static inline const char* name = nullptr;

        static Result WINAPI Call(Arguments... arguments) {
            const DWORD error = Before() ? Before()(name, FirstPath(arguments...)) : ERROR_SUCCESS;
            if (error != ERROR_SUCCESS) {
                if (name == std::string_view("CloseHandle")) {
                    // One that fails has closed the handle all the same.
                    static_cast<void>((SystemPlatformCalls().*Member)(arguments...));
                }
                SetLastError(error);
                if constexpr (std::is_same_v<Result, HANDLE>) {
                    return INVALID_HANDLE_VALUE;
                } else {
                    return FALSE;
                }
            }
            return (SystemPlatformCalls().*Member)(arguments...);
        }
    };

    template <auto Member>
    static void Watch(TPlatformCalls& calls, const char* name) {
        using THooked = THook<Member, std::remove_reference_t<decltype(calls.*Member)>>;
        THooked::name = name;
        calls.*Member = &THooked::Call;
    }
};
