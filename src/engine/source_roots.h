// The source folders of a run, and whether they are still there.
#pragma once

#include <chrono>
#include <cstddef>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "support/file_identity.h"
#include "support/platform_calls.h"
#include "support/problem.h"

// A file that vanished between scan and copy is nothing special; when the folder of its row has gone, or the
// drive behind it, the files of a whole tree have no copy and somebody must hear of it. Shared by the scan,
// which adds the folders, and by the copying: every function may be called on any thread. A lost folder stays
// lost and is told once: by whoever is the first to be given its problem (SourceFolderLost).
class TSourceRoots {
public:
    explicit TSourceRoots(const TPlatformCalls& calls) : calls_(calls) {}
    TSourceRoots(const TSourceRoots&) = delete;
    TSourceRoots& operator=(const TSourceRoots&) = delete;
    ~TSourceRoots() = default;

    // A row's folder, which exists now; answers the number under which it is known here.
    std::size_t Add(const std::wstring& folder);
    std::wstring Folder(std::size_t root) const;
    // Something lies in it: when it is empty later on, what was mounted there has gone.
    void SawContent(std::size_t root);

    bool IsLost(std::size_t root) const;
    // Asks for the folder now.
    std::optional<TProblem> Check(std::size_t root);
    // Something below the folder, or the file or folder of that path below any of them, is missing or does
    // not answer. Asks for the root at most once a second; AskOwed asks what that left open.
    std::optional<TProblem> Missed(std::size_t root);
    std::optional<TProblem> Missed(const std::wstring& path);
    // At the end of the scan and of the run.
    std::vector<TProblem> AskOwed();

private:
    using TClock = std::chrono::steady_clock;

    struct TRoot {
        std::wstring folder;
        std::optional<TFileIdentity> identity;
        bool hadContent = false;
        bool isLost = false;
        bool isOwed = false;
        std::optional<TClock::time_point> lastAsked;
    };

    std::optional<TProblem> Ask(TRoot& root) const;
    TErrorCode WhyGone(const TRoot& root) const;

    const TPlatformCalls& calls_;
    mutable std::mutex mutex_;
    std::vector<TRoot> roots_;
};
