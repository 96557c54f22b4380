#include "support/folder_tree.h"

#include <algorithm>
#include <vector>

#include "support/folder_listing.h"

namespace {

bool IsWalkedInto(const WIN32_FIND_DATAW& entry, bool hiddenFolders) {
    const DWORD leftOut = FILE_ATTRIBUTE_SYSTEM | (hiddenFolders ? 0U : FILE_ATTRIBUTE_HIDDEN);
    return IsFolder(entry) && (entry.dwFileAttributes & leftOut) == 0 && entry.cFileName[0] != L'.';
}

bool IsLink(const WIN32_FIND_DATAW& entry) {
    return (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

}  // namespace

void WalkSubFolders(const TPlatformCalls& calls, TLinkLoopCheck& linkLoops, const std::wstring& folder,
                    const TFolderTreeWalk& walk) {
    // A list instead of recursion: trees may be thousands of folders deep.
    std::vector<std::wstring> pending{folder};
    while (!pending.empty()) {
        const std::wstring current = std::move(pending.back());
        pending.pop_back();
        if (current.size() > folder.size() && !walk.found(current)) {
            return;
        }
        const std::size_t firstChild = pending.size();
        TFolderListing listing(calls, current);
        while (listing.Next()) {
            if (!IsWalkedInto(listing.Entry(), walk.hiddenFolders)) {
                continue;
            }
            std::wstring child = current + L"\\" + listing.Entry().cFileName;
            if (!IsLink(listing.Entry()) || !linkLoops.LeadsBackToAncestor(child)) {
                pending.push_back(std::move(child));
            }
        }
        std::reverse(pending.begin() + static_cast<std::ptrdiff_t>(firstChild), pending.end());
        if (walk.incomplete && listing.Error() != ERROR_SUCCESS && !listing.FolderIsMissing()) {
            walk.incomplete(current, listing.Error());
        }
    }
}
