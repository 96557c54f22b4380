// Which file or folder a path leads to, whatever path it is.
#pragma once

#include <windows.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "support/file_access.h"
#include "support/platform_calls.h"

// Volume serial number and file index, which together name a file or folder.
struct TFileIdentity {
    std::uint32_t volume = 0;
    std::uint64_t index = 0;

    friend bool operator==(const TFileIdentity&, const TFileIdentity&) = default;
};

// Three calls. Links are followed. Nothing when the path cannot be opened, or when its file system has no
// such numbers.
std::optional<TFileIdentity> FileIdentity(const TPlatformCalls& calls, std::wstring_view path);

// Whether both paths lead to one file or folder. False when that cannot be told.
bool IsSameFile(const TPlatformCalls& calls, std::wstring_view one, std::wstring_view other);

// QueryAttributes tells of a symbolic link itself; this tells of what it leads to, by opening it.
TAttributes QueryAttributesBehindLink(const TPlatformCalls& calls, std::wstring_view path);

// The path without links and substituted drives, in the system's extended form; empty when it cannot be told.
std::wstring FinalPath(const TPlatformCalls& calls, std::wstring_view path);

// Whether a listing's entry is a link that stands for another file or folder. (Other reparse points, as those
// of cloud folders and compressed files, are the file itself.)
inline bool IsSymbolicLink(const WIN32_FIND_DATAW& entry) {
    return (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
           IsReparseTagNameSurrogate(entry.dwReserved0);
}
