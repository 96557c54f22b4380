#include "engine/verify_file.h"

#include <algorithm>
#include <array>
#include <memory>
#include <new>
#include <span>

#include "engine/copy_decision.h"
#include "engine/verify_rules.h"
#include "support/file_access.h"
#include "support/open_file.h"

namespace {

// Both blocks of all threads stay in the processor's cache.
constexpr std::size_t kLargestBlock = 256 * 1024;
// Reading past the caches wants whole sectors, to memory that begins with one; none are larger than this.
constexpr std::size_t kGrain = 64 * 1024;
constexpr std::align_val_t kAlignment{4096};

struct TFreeBlock {
    void operator()(std::byte* block) const { ::operator delete[](block, kAlignment); }
};

class TBlock {
public:
    explicit TBlock(std::size_t size)
        : bytes_(static_cast<std::byte*>(::operator new[](size, kAlignment))), size_(size) {}

    std::span<std::byte> Bytes() const { return {bytes_.get(), size_}; }

private:
    std::unique_ptr<std::byte[], TFreeBlock> bytes_;
    std::size_t size_;
};

// Room for all of a small file: a byte more, so that one block shows its end.
std::size_t BlockFor(std::int64_t size) {
    const auto bytes = static_cast<std::uint64_t>(std::max<std::int64_t>(size, 0)) + 1;
    return bytes >= kLargestBlock ? kLargestBlock
                                  : (static_cast<std::size_t>(bytes) + kGrain - 1) / kGrain * kGrain;
}

bool CannotPassCaches(TErrorCode error) {
    constexpr std::array<TErrorCode, 4> kCodes = {ERROR_INVALID_PARAMETER, ERROR_NOT_SUPPORTED,
                                                  ERROR_INVALID_FUNCTION, ERROR_CALL_NOT_IMPLEMENTED};
    return std::ranges::find(kCodes, error) != kCodes.end();
}

// One of the two files, open for reading.
class TReadFile {
public:
    TReadFile(const TPlatformCalls& calls, std::wstring_view path, DWORD caching)
        : calls_(calls), path_(path), caching_(caching) {}

    TErrorCode Open() {
        file_.emplace(calls_, path_, GENERIC_READ,
                      DWORD{FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE}, DWORD{OPEN_EXISTING},
                      FILE_FLAG_SEQUENTIAL_SCAN | caching_);
        return file_->OpenError();
    }

    // Asked of the open file itself: a listing may still show what it was before.
    TErrorCode State(TFileState& state, FILETIME& lastWrite) const {
        std::int64_t size = 0;
        if (const TErrorCode error = file_->Size(size)) {
            return error;
        }
        if (!calls_.GetFileTime(file_->Get(), nullptr, nullptr, &lastWrite)) {
            return LastFailure();
        }
        const auto ticks =
            static_cast<std::uint64_t>(lastWrite.dwHighDateTime) << 32 | lastWrite.dwLowDateTime;
        state = {.written = UniversalDateTime(ticks), .size = size};
        return ERROR_SUCCESS;
    }

    // Up to `size`, which the file had when it was opened: one that ends before that was not read in full.
    TErrorCode Read(std::span<std::byte> block, std::int64_t size, std::size_t& read) {
        read = 0;
        while (read < block.size() && position_ < size) {
            const std::span<std::byte> rest = block.subspan(read);
            DWORD got = 0;
            if (!calls_.ReadFile(file_->Get(), rest.data(), static_cast<DWORD>(rest.size()), &got, nullptr)) {
                return LastFailure();
            }
            if (got == 0) {
                return ERROR_HANDLE_EOF;
            }
            read += got;
            position_ += got;
        }
        return ERROR_SUCCESS;
    }

private:
    const TPlatformCalls& calls_;
    const std::wstring_view path_;
    const DWORD caching_;
    std::optional<TOpenFile> file_;
    std::int64_t position_ = 0;
};

class TVerification {
public:
    TVerification(const TPlatformCalls& calls, const TLocalTimeRule& localTime, TPatience& patience,
                  const TFileToVerify& file, const std::function<bool(std::size_t)>& goOn)
        : calls_(calls), localTime_(localTime), file_(file), goOn_(goOn), retries_(calls, patience) {}

    TVerified Make() {
        const TVerified verified = LookTwice();
        if (verified.verdict != TVerdict::Unreadable || !CannotPassCaches(verified.error)) {
            return verified;
        }
        // Some destinations refuse it from the beginning, others behind a part that was less than whole
        // sectors. From the beginning then: what is opened anew may be another file.
        caching_ = 0;
        return LookTwice();
    }

private:
    TVerified LookTwice() {
        constexpr int kLooks = 2;
        for (int look = 0; look < kLooks; ++look) {
            hasChanged_ = false;
            const TVerified verified = Look();
            if (!hasChanged_) {
                return verified;
            }
        }
        return {.verdict = TVerdict::InUse};
    }

    TVerified Look() {
        TReadFile source(calls_, file_.source, 0);
        if (const TErrorCode error = retries_([&] { return source.Open(); })) {
            return OfSource(error);
        }
        TFileState state;
        FILETIME lastWrite{};
        if (const TErrorCode error = source.State(state, lastWrite)) {
            return OfSource(error);
        }
        const TVerified verified = LookAtCopy(source, state, localTime_.ToLocal(lastWrite));
        TFileState after;
        if (const TErrorCode error = source.State(after, lastWrite)) {
            return OfSource(error);
        }
        hasChanged_ = verified.verdict != TVerdict::Stopped && after != state;
        const bool differs =
            verified.verdict == TVerdict::WrongContent || verified.verdict == TVerdict::WrongSize;
        // Whoever has it open may have written what no date shows yet.
        return differs && IsHeldForWriting() ? TVerified{.verdict = TVerdict::InUse} : verified;
    }

    TVerified LookAtCopy(TReadFile& source, const TFileState& state, TDateTime local) {
        TReadFile copy(calls_, file_.copy, caching_);
        const TErrorCode error = retries_([&] { return copy.Open(); });
        if (error != ERROR_SUCCESS && !IsMissing(error)) {
            return OfCopy(error);
        }
        std::optional<TFileState> stateOfCopy;
        if (error == ERROR_SUCCESS) {
            FILETIME lastWrite{};
            if (const TErrorCode refused = copy.State(stateOfCopy.emplace(), lastWrite)) {
                return {.verdict = TVerdict::Unreadable, .error = refused};
            }
        }
        switch (NextVerifyStep(state, local, file_.recorded, stateOfCopy, file_.recordsAreKnown)) {
            case TVerifyStep::ToBeCopied:
                return {.verdict = TVerdict::ToBeCopied, .error = error};
            case TVerifyStep::Missing:
                return {.verdict = TVerdict::Missing, .error = error};
            case TVerifyStep::WrongSize:
                return {.verdict = TVerdict::WrongSize,
                        .number = static_cast<std::uint64_t>(stateOfCopy->size),
                        .sourceSize = static_cast<std::uint64_t>(state.size)};
            case TVerifyStep::ReadBoth:
                return Compare(source, copy, state.size);
        }
        return {};
    }

    TVerified Compare(TReadFile& source, TReadFile& copy, std::int64_t size) const {
        const TBlock ofSource(BlockFor(size));
        const TBlock ofCopy(BlockFor(size));
        const auto reader = [size](TReadFile& file) -> TBlockReader {
            return [&file, size](std::span<std::byte> block, std::size_t& read) {
                return file.Read(block, size, read);
            };
        };
        const TStreamComparison compared =
            CompareStreams(reader(source), ofSource.Bytes(), reader(copy), ofCopy.Bytes(), goOn_);
        switch (compared.end) {
            case TStreamComparison::TEnd::Same:
                return {.verdict = TVerdict::Good};
            case TStreamComparison::TEnd::Different:
                return {.verdict = TVerdict::WrongContent, .number = compared.same};
            case TStreamComparison::TEnd::SourceFailed:
                return OfSource(compared.error);
            case TStreamComparison::TEnd::CopyFailed:
                return {.verdict = TVerdict::Unreadable, .error = compared.error};
            case TStreamComparison::TEnd::Stopped:
                break;
        }
        return {.verdict = TVerdict::Stopped};
    }

    static TVerified OfSource(TErrorCode error) {
        if (IsMissing(error)) {
            return {.verdict = TVerdict::SourceGone, .error = error};
        }
        const bool isHeld = error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION;
        return {.verdict = isHeld ? TVerdict::InUse : TVerdict::SourceUnreadable, .error = error};
    }

    // A folder cannot be opened as a file, which says no more than "denied".
    TVerified OfCopy(TErrorCode error) const {
        const bool isFolder = QueryAttributes(calls_, file_.copy).IsFolder();
        return {.verdict = isFolder ? TVerdict::IsFolder : TVerdict::Unreadable, .error = error};
    }

    bool IsHeldForWriting() const {
        const TOpenFile probe(calls_, file_.source, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE,
                              OPEN_EXISTING);
        return probe.OpenError() == ERROR_SHARING_VIOLATION;
    }

    const TPlatformCalls& calls_;
    const TLocalTimeRule& localTime_;
    const TFileToVerify& file_;
    const std::function<bool(std::size_t)>& goOn_;
    TRetries retries_;
    DWORD caching_ = FILE_FLAG_NO_BUFFERING;  // of the copy
    bool hasChanged_ = false;
};

}  // namespace

TVerified VerifyFile(const TPlatformCalls& calls, const TLocalTimeRule& localTime, TPatience& patience,
                     const TFileToVerify& file, const std::function<bool(std::size_t bytes)>& goOn) {
    return TVerification(calls, localTime, patience, file, goOn).Make();
}
