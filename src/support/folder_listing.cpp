#include "support/folder_listing.h"

#include "support/path_text.h"

TFolderListing::TFolderListing(const TPlatformCalls& calls, std::wstring_view folder) : calls_(calls) {
    std::wstring pattern = ExtendedPath(folder);
    pattern += pattern.ends_with(L'\\') ? L"*" : L"\\*";
    // The basic level leaves out the short names, which cost a question each; the larger buffer saves round
    // trips.
    find_ = calls_.FindFirstFileExW(pattern.c_str(), FindExInfoBasic, &entry_, FindExSearchNameMatch, nullptr,
                                    FIND_FIRST_EX_LARGE_FETCH);
    hasBegun_ = find_ != INVALID_HANDLE_VALUE;
    firstIsPending_ = hasBegun_;
    if (!hasBegun_) {
        error_ = GetLastError();
        if (error_ == ERROR_NO_MORE_FILES) {
            error_ = ERROR_SUCCESS;
        }
    }
}

TFolderListing::~TFolderListing() {
    if (find_ != INVALID_HANDLE_VALUE) {
        calls_.FindClose(find_);
    }
}

void TFolderListing::ReadAhead(std::size_t entries) {
    while (ahead_.size() < entries && Advance()) {
        const std::wstring_view name = entry_.cFileName;
        ahead_.push_back({.attributes = entry_.dwFileAttributes,
                          .reparseTag = entry_.dwReserved0,
                          .lastWrite = entry_.ftLastWriteTime,
                          .sizeHigh = entry_.nFileSizeHigh,
                          .sizeLow = entry_.nFileSizeLow,
                          .nameLength = static_cast<DWORD>(name.size())});
        aheadNames_ += name;
    }
}

bool TFolderListing::TakeReadAhead() {
    if (taken_ == ahead_.size()) {
        return false;
    }
    const TEntry& entry = ahead_[taken_++];
    entry_ = {};
    entry_.dwFileAttributes = entry.attributes;
    entry_.dwReserved0 = entry.reparseTag;
    entry_.ftLastWriteTime = entry.lastWrite;
    entry_.nFileSizeHigh = entry.sizeHigh;
    entry_.nFileSizeLow = entry.sizeLow;
    aheadNames_.copy(entry_.cFileName, entry.nameLength, takenNames_);
    takenNames_ += entry.nameLength;
    return true;
}

bool TFolderListing::Next() {
    while (TakeReadAhead() || Advance()) {
        const std::wstring_view name = entry_.cFileName;
        if (name != L"." && name != L"..") {
            return true;
        }
    }
    return false;
}

bool TFolderListing::Advance() {
    if (find_ == INVALID_HANDLE_VALUE || error_ != ERROR_SUCCESS) {
        return false;
    }
    if (firstIsPending_) {
        firstIsPending_ = false;
        return true;
    }
    if (calls_.FindNextFileW(find_, &entry_)) {
        return true;
    }
    const TErrorCode error = GetLastError();
    error_ = error == ERROR_NO_MORE_FILES ? ERROR_SUCCESS : error;
    calls_.FindClose(find_);
    find_ = INVALID_HANDLE_VALUE;
    return false;
}

bool TFolderListing::FolderIsMissing() const {
    // An existing folder without any entry (a drive's root can be) answers "file not found".
    // In the middle of a listing the same codes mean that it broke off.
    return !hasBegun_ && IsMissing(error_);
}
