#include "support/file_identity.h"

#include "support/open_file.h"

namespace {

// Opened without access rights: only what it is is asked for. Folders need the backup flag.
TOpenFile OpenToAsk(const TPlatformCalls& calls, std::wstring_view path) {
    return {calls,
            path,
            0,
            FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
            OPEN_EXISTING,
            FILE_FLAG_BACKUP_SEMANTICS};
}

TErrorCode Ask(const TPlatformCalls& calls, std::wstring_view path, BY_HANDLE_FILE_INFORMATION& information) {
    const TOpenFile opened = OpenToAsk(calls, path);
    if (opened.OpenError() != ERROR_SUCCESS) {
        return opened.OpenError();
    }
    return calls.GetFileInformationByHandle(opened.Get(), &information) ? ERROR_SUCCESS : LastFailure();
}

}  // namespace

std::optional<TFileIdentity> FileIdentity(const TPlatformCalls& calls, std::wstring_view path) {
    BY_HANDLE_FILE_INFORMATION information{};
    if (Ask(calls, path, information) != ERROR_SUCCESS) {
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

bool IsSameFile(const TPlatformCalls& calls, std::wstring_view one, std::wstring_view other) {
    const auto identity = FileIdentity(calls, one);
    return identity && identity == FileIdentity(calls, other);
}

TAttributes QueryAttributesBehindLink(const TPlatformCalls& calls, std::wstring_view path) {
    BY_HANDLE_FILE_INFORMATION information{};
    TAttributes answer;
    answer.error = Ask(calls, path, information);
    answer.data = {information.dwFileAttributes, information.ftCreationTime, information.ftLastAccessTime,
                   information.ftLastWriteTime,  information.nFileSizeHigh,  information.nFileSizeLow};
    return answer;
}

std::wstring FinalPath(const TPlatformCalls& calls, std::wstring_view path) {
    const TOpenFile opened = OpenToAsk(calls, path);
    if (opened.OpenError() != ERROR_SUCCESS) {
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
