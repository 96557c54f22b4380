#include "support/file_access.h"

#include <algorithm>
#include <exception>
#include <optional>
#include <utility>

#include "support/access_rights.h"
#include "support/open_file.h"
#include "support/path_text.h"
#include "support/problem.h"
#include "support/retries.h"

namespace {

constexpr DWORD kLargestTransfer = 16 * 1024 * 1024;

// A file written beside the one it is to replace; deleted again unless it has taken that one's place.
class TFileBeside {
public:
    TFileBeside(const TPlatformCalls& calls, std::wstring path) : calls_(calls), path_(std::move(path)) {}
    TFileBeside(const TFileBeside&) = delete;
    TFileBeside& operator=(const TFileBeside&) = delete;
    ~TFileBeside() {
        if (exists_) {
            static_cast<void>(retries_([this] { return RemoveFile(calls_, path_); }));
        }
    }

    TErrorCode Write(const std::function<TErrorCode(const TByteSink&)>& write) {
        std::optional<TOpenFile> file;
        const TErrorCode openError = retries_([&] {
            return file.emplace(calls_, path_, GENERIC_WRITE, DWORD{0}, DWORD{CREATE_ALWAYS}).OpenError();
        });
        if (openError != ERROR_SUCCESS) {
            return openError;
        }
        exists_ = true;
        if (const TErrorCode error = write([&file](std::string_view bytes) { return file->Write(bytes); })) {
            return error;
        }
        const TErrorCode flushError = file->Flush();
        const TErrorCode closeError = file->Close();
        return flushError != ERROR_SUCCESS ? flushError : closeError;
    }

    TErrorCode RenameOver(const std::wstring& target) {
        const TErrorCode error = retries_([&]() -> TErrorCode {
            return calls_.MoveFileExW(path_.c_str(), target.c_str(),
                                      MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)
                       ? ERROR_SUCCESS
                       : LastFailure();
        });
        exists_ = error != ERROR_SUCCESS;
        return error;
    }

private:
    const TPlatformCalls& calls_;
    std::wstring path_;
    bool exists_ = false;
    TPatience patience_;
    TRetries retries_{calls_, patience_};
};

// What no folder can be made of: the drive or share at the front of a path in the extended form.
std::wstring_view RootOf(std::wstring_view extended) {
    constexpr std::wstring_view kShares = L"\\\\?\\UNC\\";
    if (!extended.starts_with(kShares)) {
        return DrivePart(extended);
    }
    const std::size_t serverEnd = std::min(extended.find(L'\\', kShares.size()), extended.size() - 1);
    return extended.substr(0, extended.find(L'\\', serverEnd + 1));
}

}  // namespace

TAttributes QueryAttributes(const TPlatformCalls& calls, std::wstring_view path) {
    const std::wstring extended = ExtendedPath(path);
    TAttributes answer;
    if (!calls.GetFileAttributesExW(extended.c_str(), GetFileExInfoStandard, &answer.data)) {
        answer.error = LastFailure();
        answer.data = {};
    }
    return answer;
}

bool FileExists(const TPlatformCalls& calls, std::wstring_view path) {
    return QueryAttributes(calls, path).IsFile();
}

bool FolderExists(const TPlatformCalls& calls, std::wstring_view path) {
    return QueryAttributes(calls, path).IsFolder();
}

bool CreateFolders(const TPlatformCalls& calls, std::wstring_view path) {
    // In the extended form, where "/" and trailing separators are gone.
    const std::wstring folder = ExtendedPath(path);
    return CreateFoldersBelow(calls, RootOf(folder), folder) == ERROR_SUCCESS;
}

TErrorCode CreateFoldersBelow(const TPlatformCalls& calls, std::wstring_view root, std::wstring_view path) {
    const std::wstring folder = ExtendedPath(path);
    const auto create = [&]() -> TErrorCode {
        if (calls.CreateDirectoryW(folder.c_str(), nullptr)) {
            return ERROR_SUCCESS;
        }
        const TErrorCode error = LastFailure();
        // A folder that exists is answered by several codes: a drive's root, or one in a folder where nothing
        // may be created, with "access denied". Another program may have made it in the meantime.
        return error != ERROR_PATH_NOT_FOUND && FolderExists(calls, folder) ? ERROR_SUCCESS : error;
    };
    const TErrorCode error = create();
    const std::wstring_view parent = RemoveTrailingSeparator(FolderPart(path));
    if (error != ERROR_PATH_NOT_FOUND || parent.size() <= root.size()) {
        return error;
    }
    const TErrorCode parentError = CreateFoldersBelow(calls, root, parent);
    return parentError != ERROR_SUCCESS ? parentError : create();
}

TErrorCode ReadWholeFile(const TPlatformCalls& calls, std::wstring_view path, std::string& bytes) {
    bytes.clear();
    const TOpenFile file(calls, path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                         OPEN_EXISTING);
    if (file.OpenError() != ERROR_SUCCESS) {
        return file.OpenError();
    }
    std::int64_t size = 0;
    if (const TErrorCode error = file.Size(size)) {
        return error;
    }
    try {
        bytes.resize(static_cast<std::size_t>(size));
    } catch (const std::exception&) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    std::size_t filled = 0;
    while (filled < bytes.size()) {
        const auto wanted =
            static_cast<DWORD>(std::min<std::size_t>(bytes.size() - filled, kLargestTransfer));
        DWORD received = 0;
        if (!calls.ReadFile(file.Get(), bytes.data() + filled, wanted, &received, nullptr)) {
            return GetLastError();
        }
        if (received == 0) {
            break;
        }
        filled += received;
    }
    bytes.resize(filled);
    return ERROR_SUCCESS;
}

bool LoadFile(const TPlatformCalls& calls, std::wstring_view path,
              const std::function<void(std::string_view bytes)>& take) {
    std::string bytes;
    const TErrorCode error = ReadWholeFile(calls, path, bytes);
    if (IsMissing(error)) {
        return false;
    }
    if (error != ERROR_SUCCESS) {
        throw EProblem({.what = TProblemKind::FileNotRead, .path = std::wstring(path), .code = error});
    }
    try {
        take(bytes);
    } catch (const EProblem& reason) {
        TProblem problem = reason.Problem();
        problem.path = path;
        throw EProblem(std::move(problem));
    }
    return true;
}

TErrorCode ReplaceWholeFile(const TPlatformCalls& calls, std::wstring_view path,
                            const std::function<TErrorCode(const TByteSink&)>& write,
                            TRightsOfNewFile rights) {
    const std::wstring target = ExtendedPath(path);
    TFileBeside beside(calls, target + L".new");
    if (const TErrorCode error = beside.Write(write)) {
        return error;
    }
    const TAttributes old = QueryAttributes(calls, target);
    std::optional<TAccessRights> oldRights;
    if (rights == TRightsOfNewFile::AsBefore && old.Exists()) {
        // ReplaceFileW would keep them, too, but moves the old file away before the new one has its name: a
        // power cut in between leaves none.
        oldRights.emplace(calls, target);
    }
    const bool readOnly = old.IsReadOnlyFile();
    if (readOnly) {
        // A read-only file cannot be replaced by a rename.
        calls.SetFileAttributesW(target.c_str(), FILE_ATTRIBUTE_NORMAL);
    }
    const TErrorCode error = beside.RenameOver(target);
    if (error != ERROR_SUCCESS && readOnly) {
        calls.SetFileAttributesW(target.c_str(), old.data.dwFileAttributes);
    }
    if (error == ERROR_SUCCESS && oldRights) {
        // Not before: they may refuse that the file is renamed.
        oldRights->GiveTo(target);
    }
    return error;
}

TErrorCode RemoveFile(const TPlatformCalls& calls, std::wstring_view path) {
    const std::wstring extended = ExtendedPath(path);
    if (calls.DeleteFileW(extended.c_str())) {
        return ERROR_SUCCESS;
    }
    const TErrorCode error = LastFailure();
    // A read-only file is not deleted.
    return error == ERROR_ACCESS_DENIED &&
                   calls.SetFileAttributesW(extended.c_str(), FILE_ATTRIBUTE_NORMAL) &&
                   calls.DeleteFileW(extended.c_str())
               ? ERROR_SUCCESS
               : error;
}

TErrorCode AppendToFile(const TPlatformCalls& calls, std::wstring_view path, std::string_view bytes) {
    TPatience patience;
    TRetries retries(calls, patience);
    std::optional<TOpenFile> file;
    const TErrorCode openError = retries([&] {
        return file.emplace(calls, path, DWORD{GENERIC_WRITE}, DWORD{FILE_SHARE_READ}, DWORD{OPEN_ALWAYS})
            .OpenError();
    });
    if (openError != ERROR_SUCCESS) {
        return openError;
    }
    if (!calls.SetFilePointerEx(file->Get(), LARGE_INTEGER{}, nullptr, FILE_END)) {
        return LastFailure();
    }
    const TErrorCode writeError = file->Write(bytes);
    const TErrorCode closeError = file->Close();
    return writeError != ERROR_SUCCESS ? writeError : closeError;
}
