#include "support/open_file.h"

#include <algorithm>
#include <utility>

#include "support/path_text.h"

namespace {

constexpr DWORD kLargestTransfer = 16 * 1024 * 1024;

}  // namespace

TOpenFile::TOpenFile(const TPlatformCalls& calls, std::wstring_view path, DWORD access, DWORD sharing,
                     DWORD disposition, DWORD flags)
    : calls_(calls),
      handle_(calls.CreateFileW(ExtendedPath(path).c_str(), access, sharing, nullptr, disposition, flags,
                                nullptr)),
      openError_(handle_ == INVALID_HANDLE_VALUE ? LastFailure() : ERROR_SUCCESS) {}

TErrorCode TOpenFile::Size(std::int64_t& size) const {
    LARGE_INTEGER answer{};
    if (!calls_.GetFileSizeEx(handle_, &answer)) {
        return LastFailure();
    }
    size = answer.QuadPart;
    return ERROR_SUCCESS;
}

TErrorCode TOpenFile::Write(std::string_view bytes) const {
    while (!bytes.empty()) {
        const auto size = static_cast<DWORD>(std::min<std::size_t>(bytes.size(), kLargestTransfer));
        DWORD written = 0;
        if (!calls_.WriteFile(handle_, bytes.data(), size, &written, nullptr)) {
            return LastFailure();
        }
        if (written == 0) {
            return ERROR_WRITE_FAULT;
        }
        bytes.remove_prefix(written);
    }
    return ERROR_SUCCESS;
}

TErrorCode TOpenFile::Flush() const {
    return calls_.FlushFileBuffers(handle_) ? ERROR_SUCCESS : LastFailure();
}

TErrorCode TOpenFile::Close() {
    const HANDLE open = std::exchange(handle_, INVALID_HANDLE_VALUE);
    return open == INVALID_HANDLE_VALUE || calls_.CloseHandle(open) ? ERROR_SUCCESS : LastFailure();
}
