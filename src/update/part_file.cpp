#include "update/part_file.h"

#include <utility>

#include "support/path_text.h"
#include "support/retries.h"

TPartFile::TPartFile(const TPlatformCalls& calls, std::wstring path)
    : calls_(calls), path_(std::move(path)), temporaryPath_(ExtendedPath(path_ + L".part")) {}

TPartFile::~TPartFile() {
    Close();
    if (exists_) {
        calls_.DeleteFileW(temporaryPath_.c_str());
    }
}

TErrorCode TPartFile::Open() {
    if (!CreateFolders(calls_, RemoveTrailingSeparator(FolderPart(path_)))) {
        return ERROR_PATH_NOT_FOUND;
    }
    file_ = calls_.CreateFileW(temporaryPath_.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                               CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file_ == INVALID_HANDLE_VALUE) {
        return GetLastError();
    }
    exists_ = true;
    return ERROR_SUCCESS;
}

TErrorCode TPartFile::Write(std::uint64_t position, std::string_view bytes) {
    while (!bytes.empty()) {
        // With its own position each write is independent of those of other threads.
        OVERLAPPED place{};
        place.Offset = static_cast<DWORD>(position);
        place.OffsetHigh = static_cast<DWORD>(position >> 32);
        DWORD written = 0;
        if (!calls_.WriteFile(file_, bytes.data(), static_cast<DWORD>(bytes.size()), &written, &place)) {
            return GetLastError();
        }
        if (written == 0) {
            return ERROR_WRITE_FAULT;
        }
        bytes.remove_prefix(written);
        position += written;
    }
    return ERROR_SUCCESS;
}

TErrorCode TPartFile::Complete(std::uint64_t size, HANDLE cancelled) {
    LARGE_INTEGER actual{};
    if (!calls_.GetFileSizeEx(file_, &actual) || !calls_.FlushFileBuffers(file_)) {
        return GetLastError();
    }
    if (static_cast<std::uint64_t>(actual.QuadPart) != size) {
        return ERROR_INVALID_DATA;
    }
    Close();
    const TErrorCode error = Rename(cancelled);
    exists_ = error != ERROR_SUCCESS;
    return error;
}

// A virus scanner takes its time with a whole program that has just been written.
TErrorCode TPartFile::Rename(HANDLE cancelled) {
    constexpr int kSeconds = 5;
    TErrorCode error = ERROR_SUCCESS;
    for (int second = 0; second < kSeconds; ++second) {
        TPatience patience;
        error = TRetries(calls_, patience)([this]() -> TErrorCode {
            return calls_.MoveFileExW(temporaryPath_.c_str(), ExtendedPath(path_).c_str(),
                                      MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)
                       ? ERROR_SUCCESS
                       : LastFailure();
        });
        if (!IsTransientRefusal(error) || WaitForSingleObject(cancelled, 0) == WAIT_OBJECT_0) {
            break;
        }
    }
    return error;
}

void TPartFile::Close() {
    if (file_ != INVALID_HANDLE_VALUE) {
        calls_.CloseHandle(std::exchange(file_, INVALID_HANDLE_VALUE));
    }
}
