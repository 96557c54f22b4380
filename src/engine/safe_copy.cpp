#include "engine/safe_copy.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "support/file_identity.h"
#include "support/open_file.h"
#include "support/path_text.h"
#include "support/system_helpers.h"
#include "support/temporary_name.h"

namespace {

// Whether the source cannot be opened for writing: it is read-only, on a write-protected medium, or a program
// holds it open. Where Windows lets it be read all the same, a copy of it is better than none.
bool WritingWasRefused(TErrorCode error) {
    constexpr std::array<TErrorCode, 4> kCodes = {ERROR_ACCESS_DENIED, ERROR_WRITE_PROTECT,
                                                  ERROR_SHARING_VIOLATION, ERROR_LOCK_VIOLATION};
    return std::ranges::find(kCodes, error) != kCodes.end();
}

// Some file systems cannot be asked to flush: a copy there is better than none.
bool CannotFlush(TErrorCode error) {
    return error == ERROR_INVALID_FUNCTION || error == ERROR_NOT_SUPPORTED ||
           error == ERROR_CALL_NOT_IMPLEMENTED;
}

bool RenameByHandle(const TPlatformCalls& calls, HANDLE file, const std::wstring& target, bool replace) {
    const std::size_t textBytes = target.size() * sizeof(wchar_t);
    const std::size_t size = sizeof(FILE_RENAME_INFO) + textBytes;
    const auto memory = std::make_unique<std::byte[]>(size);  // zeroed: the text has its terminator
    auto* request = reinterpret_cast<FILE_RENAME_INFO*>(memory.get());
    request->ReplaceIfExists = replace ? TRUE : FALSE;
    request->FileNameLength = static_cast<DWORD>(textBytes);
    target.copy(static_cast<wchar_t*>(request->FileName), target.size());
    return calls.SetFileInformationByHandle(file, FileRenameInfo, request, static_cast<DWORD>(size)) != FALSE;
}

// One copy on its way from the source to the target's name.
class TCopyInProgress {
public:
    TCopyInProgress(const TPlatformCalls& calls, TDestinationTraits& traits, const TSafeCopy& copy)
        : calls_(calls),
          traits_(traits),
          copy_(copy),
          temporary_(std::wstring(FolderPart(copy.target)) + name_.Text()),
          retries_(calls, traits.patience) {}

    TCopyResult Make() {
        if (copy_.targetMayBeSource && IsSameFile(calls_, copy_.source, copy_.target)) {
            return {.error = ERROR_ALREADY_EXISTS, .targetIsSource = true};
        }
        TCopyResult result;
        result.error = CopyBytes();
        if (result.error == ERROR_SUCCESS) {
            result.error = Secure(result);
        }
        if (result.error == ERROR_SUCCESS) {
            result.error = PutInPlace();
        }
        if (!isInPlace_) {
            file_.reset();
            static_cast<void>(retries_([this] { return RemoveFile(calls_, temporary_); }));
        }
        return result;
    }

private:
    TErrorCode CopyBytes() const {
        const std::wstring source = ExtendedPath(copy_.source);
        const std::wstring temporary = ExtendedPath(temporary_);
        const auto copyWith = [&](DWORD flags) -> TErrorCode {
            return calls_.CopyFileExW(source.c_str(), temporary.c_str(), copy_.progressRoutine,
                                      copy_.progressData, nullptr, flags)
                       ? ERROR_SUCCESS
                       : LastFailure();
        };
        const TErrorCode error = copyWith(COPY_FILE_OPEN_SOURCE_FOR_WRITE);
        return WritingWasRefused(error) ? copyWith(0) : error;
    }

    // Makes sure that the bytes are complete and on the disk, dated as they shall be.
    TErrorCode Secure(TCopyResult& result) {
        if (const TErrorCode error = Open()) {
            return error;
        }
        if (const TErrorCode error = CheckSize(result.bytes)) {
            return error;
        }
        if (copy_.times != nullptr) {
            result.lastWrite = traits_.writeTimes.Set(calls_, file_->Get(), *copy_.times);
        }
        const TErrorCode error = file_->Flush();
        if (error != ERROR_SUCCESS && !CannotFlush(error)) {
            return error;
        }
        if (attributes_) {
            calls_.SetFileAttributesW(ExtendedPath(temporary_).c_str(), *attributes_);
        }
        return ERROR_SUCCESS;
    }

    // Once for all that follows, the rename included.
    TErrorCode Open() {
        const auto open = [this] {
            return file_
                .emplace(calls_, temporary_, GENERIC_WRITE | FILE_READ_ATTRIBUTES | DELETE,
                         DWORD{FILE_SHARE_READ | FILE_SHARE_DELETE}, DWORD{OPEN_EXISTING})
                .OpenError();
        };
        const TErrorCode error = open();
        if (error == ERROR_ACCESS_DENIED) {
            // The copy of a read-only file is read-only, too. It becomes so again when it is flushed.
            const TAttributes attributes = QueryAttributes(calls_, temporary_);
            if (attributes.IsReadOnlyFile() &&
                calls_.SetFileAttributesW(ExtendedPath(temporary_).c_str(), FILE_ATTRIBUTE_NORMAL)) {
                attributes_ = attributes.data.dwFileAttributes;
            }
        }
        return IsTransientRefusal(error) ? retries_(open) : error;
    }

    // The system's copy may end early and say that all is well, at a bad sector for instance.
    TErrorCode CheckSize(std::int64_t& bytes) const {
        if (const TErrorCode error = file_->Size(bytes)) {
            return error;
        }
        if (bytes == copy_.size) {
            return ERROR_SUCCESS;
        }
        // By a handle, which follows a link to the file itself.
        const TOpenFile source(calls_, copy_.source, FILE_READ_ATTRIBUTES,
                               FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, OPEN_EXISTING);
        if (source.OpenError() != ERROR_SUCCESS) {
            return source.OpenError();
        }
        std::int64_t now = 0;
        if (const TErrorCode error = source.Size(now)) {
            return error;
        }
        // A log may have grown before, while and after it was copied.
        const bool hasGrown = copy_.size >= 0 && copy_.size <= bytes && bytes <= now;
        return bytes == now || hasGrown ? ERROR_SUCCESS : ERROR_READ_FAULT;
    }

    TErrorCode PutInPlace() {
        if (copy_.givenUp != nullptr && *copy_.givenUp) {
            // A copy that was stuck for long could replace one that was made since.
            return ERROR_OPERATION_ABORTED;
        }
        if (traits_.renamesOnlyByPath) {
            if (const TErrorCode error = file_->Close()) {
                return error;
            }
        }
        TMovedAside earlier;
        if (copy_.moveAside) {
            earlier = MoveAsideWithNumber(calls_, copy_.target, retries_);
            if (earlier.error != ERROR_SUCCESS) {
                return earlier.error;
            }
        }
        const TErrorCode error = RenameOverTarget();
        isInPlace_ = error == ERROR_SUCCESS;
        if (!isInPlace_ && !earlier.path.empty()) {
            // Under its number alone it would not be found as the file's copy.
            static_cast<void>(retries_([&]() -> TErrorCode {
                return calls_.MoveFileW(ExtendedPath(earlier.path).c_str(),
                                        ExtendedPath(copy_.target).c_str())
                           ? ERROR_SUCCESS
                           : LastFailure();
            }));
        }
        return isInPlace_ ? file_->Close() : error;
    }

    TErrorCode RenameOverTarget() {
        TErrorCode error = Rename();
        if (!IsTransientRefusal(error)) {
            return error;
        }
        // A read-only file is not replaced. Asked only now, so that the usual case costs no question.
        const TAttributes old = QueryAttributes(calls_, copy_.target);
        if (old.IsFolder()) {
            return error;
        }
        const std::wstring target = ExtendedPath(copy_.target);
        const bool wasReadOnly =
            old.IsReadOnlyFile() && calls_.SetFileAttributesW(target.c_str(), FILE_ATTRIBUTE_NORMAL);
        error = retries_([this] { return Rename(); });
        if (IsTransientRefusal(error) && file_->IsOpen()) {
            error = RenameByPath();
        }
        if (error != ERROR_SUCCESS && wasReadOnly) {
            calls_.SetFileAttributesW(target.c_str(), old.data.dwFileAttributes);
        }
        return error;
    }

    TErrorCode Rename() {
        if (file_->IsOpen()) {
            if (RenameByHandle(calls_, file_->Get(), ExtendedPath(copy_.target), !copy_.moveAside)) {
                return ERROR_SUCCESS;
            }
            const TErrorCode error = LastFailure();
            if (IsTransientRefusal(error) || IsOutOfReach(error)) {
                return error;
            }
        }
        return RenameByPath();
    }

    // The way for file systems that cannot rename an open file; known to be one when this goes well.
    TErrorCode RenameByPath() {
        if (const TErrorCode error = file_->Close()) {
            return error;
        }
        if (!calls_.MoveFileExW(ExtendedPath(temporary_).c_str(), ExtendedPath(copy_.target).c_str(),
                                copy_.moveAside ? 0 : MOVEFILE_REPLACE_EXISTING)) {
            return LastFailure();
        }
        traits_.renamesOnlyByPath = true;
        return ERROR_SUCCESS;
    }

    const TPlatformCalls& calls_;
    TDestinationTraits& traits_;
    const TSafeCopy& copy_;
    TTemporaryName name_;
    std::wstring temporary_;
    TRetries retries_;
    std::optional<TOpenFile> file_;
    std::optional<DWORD> attributes_;  // to be given back to the copy
    bool isInPlace_ = false;
};

}  // namespace

TCopyResult CopyFileSafely(const TPlatformCalls& calls, TDestinationTraits& traits, const TSafeCopy& copy) {
    return TCopyInProgress(calls, traits, copy).Make();
}
