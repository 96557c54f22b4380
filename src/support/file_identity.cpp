#include "support/file_identity.h"

#include "support/path_text.h"

namespace {

// A file or folder opened without access rights: only what it is is asked for.
class TOpenedPath {
public:
    TOpenedPath(const TPlatformCalls& calls, std::wstring_view path)
        : calls_(calls),
          // Folders need the backup flag.
          handle_(calls.CreateFileW(ExtendedPath(path).c_str(), 0,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr)),
          openError_(IsOpen() ? ERROR_SUCCESS : GetLastError()) {}
    TOpenedPath(const TOpenedPath&) = delete;
    TOpenedPath& operator=(const TOpenedPath&) = delete;
    ~TOpenedPath() {
        if (IsOpen()) {
            calls_.CloseHandle(handle_);
        }
    }

    bool IsOpen() const { return handle_ != INVALID_HANDLE_VALUE; }
    HANDLE Get() const { return handle_; }
    TErrorCode Ask(BY_HANDLE_FILE_INFORMATION& information) const {
        if (!IsOpen()) {
            return openError_ != ERROR_SUCCESS ? openError_ : ERROR_GEN_FAILURE;
        }
        return calls_.GetFileInformationByHandle(handle_, &information) ? ERROR_SUCCESS : GetLastError();
    }

private:
    const TPlatformCalls& calls_;
    HANDLE handle_;
    TErrorCode openError_;
};

}  // namespace

std::optional<TFileIdentity> FileIdentity(const TPlatformCalls& calls, std::wstring_view path) {
    BY_HANDLE_FILE_INFORMATION information{};
    if (TOpenedPath(calls, path).Ask(information) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    const std::uint64_t index =
        static_cast<std::uint64_t>(information.nFileIndexHigh) << 32 | information.nFileIndexLow;
    if (index == 0) {
        // A file system without such numbers answers 0 for every folder.
        return std::nullopt;
    }
    return TFileIdentity{information.dwVolumeSerialNumber, index};
}

TAttributes QueryAttributesBehindLink(const TPlatformCalls& calls, std::wstring_view path) {
    BY_HANDLE_FILE_INFORMATION information{};
    TAttributes answer;
    answer.error = TOpenedPath(calls, path).Ask(information);
    answer.data = {information.dwFileAttributes, information.ftCreationTime, information.ftLastAccessTime,
                   information.ftLastWriteTime,  information.nFileSizeHigh,  information.nFileSizeLow};
    return answer;
}

std::wstring FinalPath(const TPlatformCalls& calls, std::wstring_view path) {
    const TOpenedPath opened(calls, path);
    if (!opened.IsOpen()) {
        return {};
    }
    std::wstring final(MAX_PATH, L'\0');
    for (;;) {
        // Answers the length, or the size that is needed when the buffer is too small.
        const DWORD length = calls.GetFinalPathNameByHandleW(
            opened.Get(), final.data(), static_cast<DWORD>(final.size()), FILE_NAME_NORMALIZED);
        const bool fits = length < final.size();
        final.resize(length);
        if (fits) {
            return final;
        }
    }
}
