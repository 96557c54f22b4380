#include "engine/source_roots.h"

#include "support/case_folding.h"
#include "support/folder_listing.h"

namespace {

constexpr std::chrono::seconds kPause{1};

bool LiesIn(const std::wstring& foldedPath, const std::wstring& folder) {
    return foldedPath.starts_with(FoldedCase(folder) + L"\\");
}

}  // namespace

std::size_t TSourceRoots::Add(const std::wstring& folder) {
    const std::optional<TFileIdentity> identity = FileIdentity(calls_, folder);
    const std::scoped_lock lock(mutex_);
    roots_.push_back({.folder = folder, .identity = identity, .lastAsked = {}});
    return roots_.size() - 1;
}

std::wstring TSourceRoots::Folder(std::size_t root) const {
    const std::scoped_lock lock(mutex_);
    return roots_[root].folder;
}

void TSourceRoots::SawContent(std::size_t root) {
    const std::scoped_lock lock(mutex_);
    roots_[root].hadContent = true;
}

bool TSourceRoots::IsLost(std::size_t root) const {
    const std::scoped_lock lock(mutex_);
    return roots_[root].isLost;
}

std::optional<TProblem> TSourceRoots::Check(std::size_t root) {
    const std::scoped_lock lock(mutex_);
    return Ask(roots_[root]);
}

std::optional<TProblem> TSourceRoots::Missed(std::size_t root) {
    const std::scoped_lock lock(mutex_);
    TRoot& missed = roots_[root];
    missed.isOwed = true;
    if (missed.lastAsked && TClock::now() - *missed.lastAsked < kPause) {
        return std::nullopt;
    }
    return Ask(missed);
}

std::optional<TProblem> TSourceRoots::Missed(const std::wstring& path) {
    std::optional<std::size_t> nearest;
    {
        const std::wstring folded = FoldedCase(path);
        const std::scoped_lock lock(mutex_);
        for (std::size_t root = 0; root < roots_.size(); ++root) {
            if (LiesIn(folded, roots_[root].folder) &&
                (!nearest || roots_[root].folder.size() > roots_[*nearest].folder.size())) {
                nearest = root;
            }
        }
    }
    return nearest ? Missed(*nearest) : std::nullopt;
}

std::vector<TProblem> TSourceRoots::AskOwed() {
    std::vector<TProblem> problems;
    const std::scoped_lock lock(mutex_);
    for (TRoot& root : roots_) {
        if (root.isOwed) {
            if (auto problem = Ask(root)) {
                problems.push_back(std::move(*problem));
            }
        }
    }
    return problems;
}

std::optional<TProblem> TSourceRoots::Ask(TRoot& root) const {
    root.isOwed = false;
    if (root.isLost) {
        return std::nullopt;
    }
    const TErrorCode error = WhyGone(root);
    root.lastAsked = TClock::now();
    if (error == ERROR_SUCCESS) {
        return std::nullopt;
    }
    root.isLost = true;
    return TProblem{.what = TProblemKind::SourceFolderLost, .path = root.folder, .code = error};
}

TErrorCode TSourceRoots::WhyGone(const TRoot& root) const {
    const TAttributes attributes = QueryAttributes(calls_, root.folder);
    if (IsMissing(attributes.error) || IsOutOfReach(attributes.error)) {
        return attributes.error;
    }
    // What lies under an emptied mount point, or under a drive letter that was given away, is another folder.
    const std::optional<TFileIdentity> now = root.identity ? FileIdentity(calls_, root.folder) : std::nullopt;
    if (attributes.IsFile() || (now && now != root.identity)) {
        return ERROR_PATH_NOT_FOUND;
    }
    if (root.hadContent) {
        TFolderListing listing(calls_, root.folder);
        if (!listing.Next() && (listing.Error() == ERROR_SUCCESS || IsMissing(listing.Error()))) {
            return ERROR_PATH_NOT_FOUND;
        }
    }
    return ERROR_SUCCESS;
}
