#include "engine/backup_tree.h"

#include <utility>

#include "hashdb/destination_folder.h"
#include "support/case_folding.h"
#include "support/path_text.h"

namespace {

bool IsInside(const std::wstring& path, const std::wstring& tree) {
    const std::wstring folded = FoldedCase(path);
    const std::wstring foldedTree = FoldedCase(tree);
    return folded.starts_with(foldedTree) &&
           (folded.size() == foldedTree.size() || folded[foldedTree.size()] == L'\\');
}

}  // namespace

TBackupTree::TBackupTree(const TPlatformCalls& calls, std::wstring nas, std::wstring host)
    : calls_(calls), nas_(std::move(nas)), host_(std::move(host)) {}

bool TBackupTree::Holds(const std::wstring& folder) {
    if (IsInside(ExtendedPath(folder), ExtendedPath(nas_ + L"\\" + host_)) || LeadsInside(folder)) {
        return true;
    }
    if (!identity_) {
        // There is no tree yet, or it does not answer: further questions would wait out the network.
        return false;
    }
    const auto identity = FileIdentity(calls_, folder);
    if (identity && identity == FileIdentity(calls_, DestinationOfFilesIn(nas_, host_, folder))) {
        return true;
    }
    // The folders above tell what no path does: a share of this computer has identities in common with the
    // disk that it lies on.
    std::wstring_view above = folder;
    for (const std::size_t rootLength = DrivePart(folder).size(); above.size() > rootLength;) {
        above = RemoveTrailingSeparator(FolderPart(above));
        if (FileIdentity(calls_, above) == identity_) {
            return true;
        }
    }
    return false;
}

bool TBackupTree::IsEnteredBy(const std::wstring& folder, bool isLink) {
    if (!isLink && FoldedCase(FileNamePart(folder)) != FoldedCase(host_)) {
        return false;
    }
    return IsInside(ExtendedPath(folder), ExtendedPath(nas_ + L"\\" + host_)) || LeadsInside(folder);
}

bool TBackupTree::LeadsInside(const std::wstring& folder) {
    AskOnce();
    if (identity_ && FileIdentity(calls_, folder) == identity_) {
        return true;
    }
    return !finalPath_.empty() && IsInside(FinalPath(calls_, folder), finalPath_);
}

void TBackupTree::AskOnce() {
    if (!std::exchange(isAsked_, true)) {
        const std::wstring tree = nas_ + L"\\" + host_;
        identity_ = FileIdentity(calls_, tree);
        finalPath_ = FinalPath(calls_, tree);
    }
}
