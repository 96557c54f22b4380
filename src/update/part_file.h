// A file that is being downloaded.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "support/file_access.h"

// Writes to a temporary name beside the file that is wanted; the wanted name appears when everything is
// there, and nothing stays when it does not come to that.
class TPartFile {
public:
    TPartFile(const TPlatformCalls& calls, std::wstring path);
    TPartFile(const TPartFile&) = delete;
    TPartFile& operator=(const TPartFile&) = delete;
    // Deletes the temporary file unless Complete has succeeded.
    ~TPartFile();

    // Creates the temporary file, and the folder when it is missing.
    [[nodiscard]] TErrorCode Open();

    // Writes bytes at a position, from any thread.
    [[nodiscard]] TErrorCode Write(std::uint64_t position, std::string_view bytes);

    // Gives the file its name if it has just `size` bytes; what had that name before is replaced.
    // Waits some seconds for a virus scanner, until the event `cancelled` is set.
    [[nodiscard]] TErrorCode Complete(std::uint64_t size, HANDLE cancelled);

private:
    void Close();
    TErrorCode Rename(HANDLE cancelled);

    const TPlatformCalls& calls_;
    std::wstring path_;
    std::wstring temporaryPath_;
    HANDLE file_ = INVALID_HANDLE_VALUE;
    bool exists_ = false;  // the temporary file
};
