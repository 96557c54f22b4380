// A file opened through the table of platform calls, and closed through it too.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string_view>

#include "support/error_code.h"
#include "support/platform_calls.h"

// An open file; whether it could be opened is asked of it first. Closed at the end of its life at the latest.
class TOpenFile {
public:
    // The plain text of a path; access rights, sharing and disposition as CreateFileW has them.
    TOpenFile(const TPlatformCalls& calls, std::wstring_view path, DWORD access, DWORD sharing,
              DWORD disposition, DWORD flags = FILE_ATTRIBUTE_NORMAL);
    TOpenFile(const TOpenFile&) = delete;
    TOpenFile& operator=(const TOpenFile&) = delete;
    ~TOpenFile() { static_cast<void>(Close()); }

    TErrorCode OpenError() const { return openError_; }
    bool IsOpen() const { return handle_ != INVALID_HANDLE_VALUE; }
    HANDLE Get() const { return handle_; }

    // Bytes.
    [[nodiscard]] TErrorCode Size(std::int64_t& size) const;
    [[nodiscard]] TErrorCode Write(std::string_view bytes) const;
    [[nodiscard]] TErrorCode Flush() const;
    // What was written to a server may fail as late as here. A file that is not open closes well.
    [[nodiscard]] TErrorCode Close();

private:
    const TPlatformCalls& calls_;
    HANDLE handle_;
    TErrorCode openError_;
};
