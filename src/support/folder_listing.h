// The entries of one folder.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "support/file_access.h"
#include "support/platform_calls.h"

// Lists a folder entry by entry, without "." and "..". Only "no more files" ends a listing well: after the
// last entry, Error says whether it was complete. One thread may begin it and another go on.
class TFolderListing {
public:
    // The folder's plain path, without a trailing "\". Long paths are accepted.
    TFolderListing(const TPlatformCalls& calls, std::wstring_view folder);
    TFolderListing(const TFolderListing&) = delete;
    TFolderListing& operator=(const TFolderListing&) = delete;
    ~TFolderListing();

    // Before the first entry: asks for up to so many of them now, so that moving to them waits for nothing.
    void ReadAhead(std::size_t entries);

    // Moves to the next entry; false when there is none, or when the listing broke off.
    bool Next();
    // The entry that Next moved to. Name, attributes, size and last-write time are filled in.
    const WIN32_FIND_DATAW& Entry() const { return entry_; }

    // ERROR_SUCCESS, or why the listing could not begin or broke off, behind what was read ahead of it too.
    TErrorCode Error() const { return error_; }
    // Whether it could not begin because there is no such folder.
    bool FolderIsMissing() const;

private:
    // An entry read ahead, without its name: most names are far shorter than the room for one.
    struct TEntry {
        DWORD attributes = 0;
        DWORD reparseTag = 0;
        FILETIME lastWrite{};
        DWORD sizeHigh = 0;
        DWORD sizeLow = 0;
        DWORD nameLength = 0;
    };

    bool Advance();
    bool TakeReadAhead();

    const TPlatformCalls& calls_;
    WIN32_FIND_DATAW entry_{};
    HANDLE find_ = INVALID_HANDLE_VALUE;
    TErrorCode error_ = ERROR_SUCCESS;
    bool hasBegun_ = false;
    bool firstIsPending_ = false;
    std::vector<TEntry> ahead_;
    std::wstring aheadNames_;  // one behind the other
    std::size_t taken_ = 0;
    std::size_t takenNames_ = 0;
};

inline std::int64_t SizeOf(const WIN32_FIND_DATAW& entry) {
    return static_cast<std::int64_t>(entry.nFileSizeHigh) << 32 | entry.nFileSizeLow;
}

inline bool IsFolder(const WIN32_FIND_DATAW& entry) {
    return (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}
