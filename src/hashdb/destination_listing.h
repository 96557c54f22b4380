// What the backup already holds of one folder.
#pragma once

#include <windows.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "support/file_access.h"
#include "support/platform_calls.h"

// Answers for every file of one destination folder whether it exists and when it was last written, from a
// single listing: the destination is far away, and a question per file is what makes backups slow. Asked is
// only what a listing cannot answer: everything when it fails for another reason than a missing folder, so
// that nothing is wrongly held for missing; and a name of which the listing knows another spelling only,
// since whether the two are one file is the file system's to say. When the destination does not answer,
// making one and LastWriteOf throw EProblem (DestinationUnreachable). Temporary files of interrupted runs
// are removed on the way.
class TDestinationListing {
public:
    // The folder's path, without a trailing "\".
    TDestinationListing(const TPlatformCalls& calls, std::wstring folder);

    // The last-write time of the file of that name; nothing when there is no such file (a folder of that
    // name is none).
    std::optional<FILETIME> LastWriteOf(std::wstring_view fileName) const;

private:
    void Read();
    TAttributes AskForAttributes(std::wstring_view path) const;
    std::optional<FILETIME> Ask(std::wstring_view fileName) const;

    bool KnowsOtherSpelling(std::wstring_view fileName) const;

    struct TNameHash {
        using is_transparent = void;
        std::size_t operator()(std::wstring_view name) const { return std::hash<std::wstring_view>()(name); }
    };

    const TPlatformCalls& calls_;
    std::wstring folder_;
    bool complete_ = false;
    std::unordered_map<std::wstring, FILETIME, TNameHash, std::equal_to<>> files_;
    // Made when a file is first missed: when nothing has changed, none is.
    mutable std::optional<std::unordered_set<std::wstring>> foldedNames_;
};
