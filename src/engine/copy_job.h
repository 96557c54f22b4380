// One file copied off the window's thread.
#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "engine/safe_copy.h"
#include "engine/source_roots.h"
#include "support/file_access.h"
#include "support/platform_calls.h"
#include "support/problem.h"

// Smaller files are copied several at a time and without telling their progress.
inline constexpr std::int64_t kProgressThreshold = 64 * 1024 * 1024;  // bytes

// What the copies of a run share, on whichever threads they are made. Copies that are stuck own it, too.
struct TCopyGround {
    TCopyGround(const TPlatformCalls& platformCalls, std::shared_ptr<TSourceRoots> roots, std::wstring folder)
        : calls(platformCalls), sourceRoots(std::move(roots)), hostFolder(std::move(folder)) {}

    const TPlatformCalls& calls;  // outlive the run
    const std::shared_ptr<TSourceRoots> sourceRoots;
    const std::wstring hostFolder;
    TDestinationTraits traits;
    std::atomic<bool> stopped = false;  // no further file is begun
    // Found by a copy; those that were not begun wait, as each may wait out the network.
    std::atomic<bool> destinationIsGone = false;
    std::atomic<bool> givenUp = false;  // nobody waits for the copies any more: none takes its name now
};

// A folder of the destination, which is made once for the files that go there.
class TFolderToMake {
public:
    explicit TFolderToMake(std::wstring path) : path_(std::move(path)) {}

    const std::wstring& Path() const { return path_; }
    // Makes it below this computer's folder, unless it is known to exist. Others that need it wait meanwhile.
    TErrorCode Make(const TCopyGround& ground);
    // It may be gone: the next file asks again.
    void Forget();

private:
    const std::wstring path_;
    std::mutex mutex_;
    bool isKnown_ = false;
};

// A file on its way.
struct TCopyJob {
    std::wstring source;
    std::wstring target;
    std::wstring targetKey;  // equal for targets that must not be under way together
    std::shared_ptr<TFolderToMake> folder;
    bool moveAside = false;
    std::atomic<bool> begun = false;
    std::atomic<bool> isThere = false;  // the source has answered
    bool isTold = false;                // its path is in the window; only the window's thread asks
};

// What came of it.
struct TCopyOutcome {
    enum class TKind {
        NotBegun,       // the run was stopped before, or the destination is gone
        SourceMissing,  // gone since the scan saw it, alone or with all that is around it
        SourceFailed,   // out of reach, which is not gone
        FolderFailed,
        Large,  // nothing was copied, but the file has its folder
        Copied,
        CopyFailed,
    };

    TKind kind = TKind::NotBegun;
    TErrorCode error = ERROR_SUCCESS;
    TAttributes attributes{};              // of the source, of what a link leads to
    TCopyResult copied{};                  // when Copied
    std::optional<TProblem> lostFolder{};  // when SourceMissing, and nobody was told before
    bool destinationIsGone = false;        // asked when something failed
};

// Does all that a file needs from its source and the destination.
TCopyOutcome DoCopyJob(TCopyGround& ground, TCopyJob& job);
// Copies the file, whose folder exists.
TCopyOutcome CopyWithProgress(TCopyGround& ground, const TCopyJob& job, const TAttributes& attributes,
                              LPPROGRESS_ROUTINE progressRoutine, void* progressData);
