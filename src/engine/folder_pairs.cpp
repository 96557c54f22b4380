#include "engine/folder_pairs.h"

#include <utility>

#include "engine/destination_wait.h"
#include "hashdb/destination_folder.h"
#include "support/case_folding.h"

namespace {

constexpr unsigned kAttempts = 3;  // for one folder

}  // namespace

TFolderPairs::TFolderPairs(IOmniTask& task, const TPlatformCalls& calls, TSourceRoots& roots,
                           std::wstring nas, std::wstring host, const TReadAhead& readAhead,
                           std::function<void(TProblem)> problem)
    : task_(task),
      calls_(calls),
      roots_(roots),
      nas_(std::move(nas)),
      host_(std::move(host)),
      walk_(calls, roots, nas_, host_, TSourceWalkKind::Backup,
            {.problem = std::move(problem),
             .folderFound = {},
             .stopRequested = [&task] { return task.Terminated(); }}),
      listings_(
          calls, task, roots, walk_.Folders(),
          [this](const TSourceFolder& folder) { return TargetOf(folder); }, readAhead),
      sharedTargets_(calls) {}

void TFolderPairs::Find(const std::vector<SourceFolderRow>& rows) {
    for (const SourceFolderRow& row : rows) {
        walk_.Add(row);
        if (task_.Terminated()) {
            break;
        }
    }
}

std::vector<std::wstring> TFolderPairs::ListFiles(TFolderPair& pair, const TSourceWalk::TFileFound& found) {
    std::vector<std::wstring> collisions;
    walk_.ListFiles(pair.source, *pair.listings.source, [&](const WIN32_FIND_DATAW& file) {
        const std::wstring name = names_ != nullptr ? FoldedCase(file.cFileName) : std::wstring();
        if (names_ == nullptr || (!names_->contains(name) && given_.insert(name).second)) {
            found(file);
        } else {
            collisions.push_back(pair.source.path + L"\\" + file.cFileName);
        }
    });
    return collisions;
}

bool TFolderPairs::DestinationComesBack() const {
    return AwaitFolder(calls_, nas_ + L"\\" + host_, kLongestDropOut, task_).IsFolder();
}

std::wstring TFolderPairs::TargetOf(const TSourceFolder& folder) const {
    return DestinationOfFilesIn(nas_, host_, folder.path);
}

void TFolderPairs::Visit(std::size_t number, const TVisit& visit) {
    if (roots_.IsLost(walk_.Folders()[number].root)) {
        return;
    }
    for (unsigned attempt = 1;; ++attempt) {
        try {
            return VisitOnce(number, visit);
        } catch (const EProblem& problem) {
            listings_.Forget();
            if (problem.Problem().what != TProblemKind::DestinationUnreachable || attempt == kAttempts ||
                !DestinationComesBack()) {
                throw;
            }
        }
    }
}

void TFolderPairs::VisitOnce(std::size_t number, const TVisit& visit) {
    const TSourceFolder& folder = walk_.Folders()[number];
    std::optional<TFolderListings> listings = listings_.Take(number);
    if (!listings) {
        return;
    }
    TFolderPair pair{folder, TargetOf(folder), std::move(*listings)};
    names_ = folder.sharesTarget ? &sharedTargets_.NamesAt(pair.target) : nullptr;
    given_.clear();
    visit(pair);
    // Only now: a visit that broke off begins anew.
    if (names_ != nullptr) {
        names_->merge(given_);
    }
}
