#include "engine/source_walk.h"

#include <algorithm>
#include <utility>

#include "hashdb/destination_folder.h"
#include "support/case_folding.h"
#include "support/typed_folder.h"

namespace {

bool IsWalkedInto(const WIN32_FIND_DATAW& entry, bool hiddenFolders) {
    const DWORD leftOut = FILE_ATTRIBUTE_SYSTEM | (hiddenFolders ? 0U : FILE_ATTRIBUTE_HIDDEN);
    return IsFolder(entry) && (entry.dwFileAttributes & leftOut) == 0 && entry.cFileName[0] != L'.';
}

bool IsLink(const WIN32_FIND_DATAW& entry) {
    return (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

// Whether a folder that could not be asked for may be there all the same. A drive without its medium is as
// good as one that is not plugged in.
bool MayBeThere(TErrorCode error) {
    return error == ERROR_ACCESS_DENIED || error == ERROR_LOGON_FAILURE ||
           (IsOutOfReach(error) && error != ERROR_NOT_READY);
}

std::wstring WithVariables(const std::wstring& text) {
    std::wstring expanded(ExpandEnvironmentStringsW(text.c_str(), nullptr, 0), L'\0');
    const DWORD length =
        ExpandEnvironmentStringsW(text.c_str(), expanded.data(), static_cast<DWORD>(expanded.size()));
    if (length == 0 || length > expanded.size()) {
        return text;
    }
    expanded.resize(length - 1);
    return expanded;
}

}  // namespace

std::wstring FolderOfRow(const TPlatformCalls& calls, const SourceFolderRow& row) {
    // "%" may be part of a name: variables are only taken for such where there is no folder of that very
    // name.
    const std::wstring typed = row.Directory.value_or(std::wstring());
    std::wstring folder = FolderAsMeant(typed);
    if (typed.find(L'%') == std::wstring::npos || (!folder.empty() && FolderExists(calls, folder))) {
        return folder;
    }
    return FolderAsMeant(WithVariables(typed));
}

TSourceWalk::TSourceWalk(const TPlatformCalls& calls, TSourceRoots& roots, const std::wstring& nas,
                         const std::wstring& host, TSourceWalkKind kind, TSourceWalkReports reports)
    : calls_(calls),
      roots_(roots),
      nas_(nas),
      host_(host),
      kind_(kind),
      reports_(std::move(reports)),
      backupTree_(calls, nas, host),
      linkLoops_(calls) {}

void TSourceWalk::Add(const SourceFolderRow& row) {
    if (!row.Aktive.value_or(false)) {
        return;
    }
    const std::wstring folder = FolderOfRow(calls_, row);
    const TAttributes attributes =
        folder.empty() ? TAttributes{.error = ERROR_PATH_NOT_FOUND} : QueryAttributes(calls_, folder);
    if (!attributes.IsFolder()) {
        return TellAbsentRow(folder, row, attributes.error);
    }
    const bool isBackup = kind_ == TSourceWalkKind::Backup;
    if (isBackup) {
        filter_ =
            TExtensionFilter(row.Extensions.value_or(std::wstring()),
                             ParseExtensionMode(row.ExtensionMode.value_or(std::wstring())), &FoldedCase);
    }
    if (backupTree_.Holds(folder)) {
        return Tell(TProblem{.what = TProblemKind::SourceInBackup, .path = folder});
    }
    const std::size_t root = roots_.Add(folder);
    if (isBackup) {
        AddFolder({.path = folder, .root = root, .isRoot = true});
    }
    if (!isBackup || row.Rekursiv.value_or(false)) {
        AddSubFolders(root, folder, isBackup && row.Hidden.value_or(false));
    }
}

void TSourceWalk::AddFolder(TSourceFolder folder) {
    if (kind_ == TSourceWalkKind::Backup) {
        const auto targetOf = [this](const std::wstring& path) {
            return FoldedCase(DestinationOfFilesIn(nas_, host_, path));
        };
        const std::wstring target = targetOf(folder.path);
        const std::size_t hash = std::hash<std::wstring>()(target);
        const auto [first, last] = byTarget_.equal_range(hash);
        for (auto known = first; known != last; ++known) {
            TSourceFolder& other = folders_[known->second];
            if (other.path == folder.path) {
                return;
            }
            if (targetOf(other.path) == target) {
                const auto identity = FileIdentity(calls_, folder.path);
                if (!identity || identity == FileIdentity(calls_, other.path)) {
                    return;
                }
                other.sharesTarget = folder.sharesTarget = true;
            }
        }
        byTarget_.emplace(hash, folders_.size());
    }
    folders_.push_back(std::move(folder));
}

void TSourceWalk::AddSubFolders(std::size_t root, const std::wstring& folder, bool hiddenFolders) {
    // A list instead of recursion: trees may be thousands of folders deep.
    std::vector<std::wstring> pending{folder};
    while (!pending.empty() && !MustStop() && !roots_.IsLost(root)) {
        TSourceFolder current{.path = std::move(pending.back()), .root = root};
        pending.pop_back();
        current.isRoot = current.path.size() == folder.size();
        if (!current.isRoot) {
            if (reports_.folderFound) {
                reports_.folderFound(current.path);
            }
            AddFolder(current);
        }
        const std::size_t firstChild = pending.size();
        TFolderListing listing(calls_, current.path);
        bool isEmpty = true;
        while (listing.Next()) {
            isEmpty = false;
            if (!IsWalkedInto(listing.Entry(), hiddenFolders)) {
                continue;
            }
            std::wstring child = current.path + L"\\" + listing.Entry().cFileName;
            if (!LeadsAstray(child, IsLink(listing.Entry()))) {
                pending.push_back(std::move(child));
            }
        }
        std::reverse(pending.begin() + static_cast<std::ptrdiff_t>(firstChild), pending.end());
        EndListing(current, listing, isEmpty);
    }
}

bool TSourceWalk::LeadsAstray(const std::wstring& folder, bool isLink) {
    if (backupTree_.IsEnteredBy(folder, isLink)) {
        if (!std::exchange(toldOfBackupTree_, true)) {
            Tell(TProblem{.what = TProblemKind::BackupInSource, .path = folder});
        }
        return true;
    }
    return isLink && linkLoops_.LeadsBackToAncestor(folder);
}

void TSourceWalk::ListFiles(const TSourceFolder& folder, const TFileFound& found) {
    if (roots_.IsLost(folder.root)) {
        return;
    }
    TFolderListing listing(calls_, folder.path);
    ListFiles(folder, listing, found);
}

void TSourceWalk::ListFiles(const TSourceFolder& folder, TFolderListing& listing, const TFileFound& found) {
    if (roots_.IsLost(folder.root)) {
        return;
    }
    bool isEmpty = true;
    while (listing.Next()) {
        isEmpty = false;
        if (!IsFolder(listing.Entry()) && filter_.Passes(listing.Entry().cFileName)) {
            found(listing.Entry());
        }
    }
    EndListing(folder, listing, isEmpty);
}

// A listing that breaks off is not an empty folder: somebody must hear of it. A sub-folder that has vanished
// is nothing special, unless the row's folder has gone with it.
void TSourceWalk::EndListing(const TSourceFolder& folder, const TFolderListing& listing, bool isEmpty) {
    if (folder.isRoot && !isEmpty) {
        roots_.SawContent(folder.root);
    }
    if (IsOutOfReach(listing.Error())) {
        // Asked at once, since each further folder would wait out the network.
        Tell(roots_.Check(folder.root));
    } else if (listing.Error() != ERROR_SUCCESS || (folder.isRoot && isEmpty)) {
        Tell(roots_.Missed(folder.root));
    }
    if (listing.Error() != ERROR_SUCCESS && !listing.FolderIsMissing() && !roots_.IsLost(folder.root)) {
        TellIncomplete(folder.path, listing.Error());
    }
}

void TSourceWalk::End() {
    for (TProblem& problem : roots_.AskOwed()) {
        Tell(std::move(problem));
    }
}

void TSourceWalk::TellAbsentRow(const std::wstring& folder, const SourceFolderRow& row, TErrorCode error) {
    if (MayBeThere(error)) {
        return TellIncomplete(folder, error);
    }
    Tell(TProblem{.what = TProblemKind::SourceFolderMissing,
                  .path = folder.empty() ? row.Directory.value_or(std::wstring()) : folder});
}

void TSourceWalk::TellIncomplete(const std::wstring& folder, TErrorCode error) {
    if (toldFolders_.insert(folder).second) {
        Tell(TProblem{.what = TProblemKind::FolderIncomplete, .path = folder, .code = error});
    }
}

void TSourceWalk::Tell(std::optional<TProblem> problem) const {
    if (problem && reports_.problem) {
        reports_.problem(std::move(*problem));
    }
}
