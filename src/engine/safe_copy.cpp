#include "engine/safe_copy.h"

#include <string>

#include "support/path_text.h"
#include "support/temporary_name.h"

namespace {

TErrorCode CopyBytes(const TPlatformCalls& calls, const TSafeCopy& copy, const std::wstring& temporary) {
    const std::wstring source = ExtendedPath(copy.source);
    for (const DWORD flags : {static_cast<DWORD>(COPY_FILE_OPEN_SOURCE_FOR_WRITE), DWORD{0}}) {
        if (calls.CopyFileExW(source.c_str(), temporary.c_str(), copy.progressRoutine, copy.progressData,
                              nullptr, flags)) {
            return ERROR_SUCCESS;
        }
        const TErrorCode error = GetLastError();
        // Opened for writing, a source is refused when it is read-only or when a program holds it open. Where
        // Windows lets it be read all the same, a copy of it is better than none.
        const bool writingWasRefused = error == ERROR_ACCESS_DENIED || error == ERROR_SHARING_VIOLATION;
        if (!writingWasRefused || flags == 0) {
            return error != ERROR_SUCCESS ? error : ERROR_GEN_FAILURE;
        }
    }
    return ERROR_SUCCESS;
}

bool ReplaceTarget(const TPlatformCalls& calls, const std::wstring& temporary, const std::wstring& target) {
    return calls.MoveFileExW(temporary.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING) != FALSE;
}

// A rename does not replace a read-only file. The attribute is cleared only when the rename was refused, so
// that the usual case costs no question.
bool MakeReplaceable(const TPlatformCalls& calls, std::wstring_view target) {
    return QueryAttributes(calls, target).IsReadOnlyFile() &&
           calls.SetFileAttributesW(ExtendedPath(target).c_str(), FILE_ATTRIBUTE_NORMAL);
}

TErrorCode RenameOver(const TPlatformCalls& calls, const std::wstring& temporary, std::wstring_view target) {
    const std::wstring extendedTarget = ExtendedPath(target);
    if (ReplaceTarget(calls, temporary, extendedTarget)) {
        return ERROR_SUCCESS;
    }
    const TErrorCode error = GetLastError();
    if (error == ERROR_ACCESS_DENIED && MakeReplaceable(calls, target) &&
        ReplaceTarget(calls, temporary, extendedTarget)) {
        return ERROR_SUCCESS;
    }
    return error;
}

}  // namespace

TErrorCode CopyFileSafely(const TPlatformCalls& calls, const TSafeCopy& copy) {
    const std::wstring plainTemporary = std::wstring(FolderPart(copy.target)) + OwnTemporaryName();
    const std::wstring temporary = ExtendedPath(plainTemporary);
    TErrorCode error = CopyBytes(calls, copy, temporary);
    if (error == ERROR_SUCCESS) {
        if (copy.times != nullptr) {
            // A copy whose times could not be set is a copy all the same.
            static_cast<void>(WriteFileTimes(calls, plainTemporary, *copy.times));
        }
        error = RenameOver(calls, temporary, copy.target);
    }
    if (error != ERROR_SUCCESS) {
        RemoveFile(calls, plainTemporary);
    }
    return error;
}
