// The entries of one folder.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string_view>

#include "support/file_access.h"
#include "support/platform_calls.h"

// Lists a folder entry by entry, without "." and "..". Only "no more files" ends a listing well: after the
// last entry, Error says whether it was complete.
class TFolderListing {
public:
    // The folder's plain path, without a trailing "\". Long paths are accepted.
    TFolderListing(const TPlatformCalls& calls, std::wstring_view folder);
    TFolderListing(const TFolderListing&) = delete;
    TFolderListing& operator=(const TFolderListing&) = delete;
    ~TFolderListing();

    // Moves to the next entry; false when there is none, or when the listing broke off.
    bool Next();
    // The entry that Next moved to. Name, attributes, size and last-write time are filled in.
    const WIN32_FIND_DATAW& Entry() const { return entry_; }

    // ERROR_SUCCESS, or why the listing could not begin or broke off.
    TErrorCode Error() const { return error_; }
    // Whether it could not begin because there is no such folder.
    bool FolderIsMissing() const;

private:
    bool Advance();

    const TPlatformCalls& calls_;
    WIN32_FIND_DATAW entry_{};
    HANDLE find_ = INVALID_HANDLE_VALUE;
    TErrorCode error_ = ERROR_SUCCESS;
    bool hasBegun_ = false;
    bool firstIsPending_ = false;
};

inline std::int64_t SizeOf(const WIN32_FIND_DATAW& entry) {
    return static_cast<std::int64_t>(entry.nFileSizeHigh) << 32 | entry.nFileSizeLow;
}

inline bool IsFolder(const WIN32_FIND_DATAW& entry) {
    return (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}
