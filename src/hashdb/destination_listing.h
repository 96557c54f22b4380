// What the backup already holds of one folder.
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "support/platform_calls.h"

// Answers for every file of one destination folder whether it exists and when it was last written, from a
// single listing: the destination is far away, and a question per file is what makes backups slow. When the
// listing fails for another reason than a missing folder, the questions are asked file by file instead, so
// that nothing is wrongly held for missing. When the destination does not answer them either, LastWriteOf
// throws std::runtime_error (UTF-8, German). Temporary files of interrupted runs are removed on the way.
class TDestinationListing {
public:
    // The folder's path, without a trailing "\".
    TDestinationListing(const TPlatformCalls& calls, std::wstring folder);

    // The last-write time of the file of that name; nothing when there is no such file (a folder of that
    // name is none).
    std::optional<FILETIME> LastWriteOf(std::wstring_view fileName) const;

private:
    void Read();
    std::optional<FILETIME> Ask(std::wstring_view fileName) const;

    const TPlatformCalls& calls_;
    std::wstring folder_;
    bool complete_ = false;
    std::unordered_map<std::wstring, FILETIME> filesByFoldedName_;
};
