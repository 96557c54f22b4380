#include "support/link_loop.h"

#include "support/path_text.h"

bool TLinkLoopCheck::LeadsBackToAncestor(const std::wstring& path) {
    const auto target = KnownIdentityOf(path);
    if (!target) {
        return false;
    }
    const std::size_t rootLength = DrivePart(path).size();
    std::wstring_view ancestor = path;
    do {
        ancestor = RemoveTrailingSeparator(FolderPart(ancestor));
        if (ancestor.size() < rootLength || ancestor.empty()) {
            return false;
        }
        if (KnownIdentityOf(std::wstring(ancestor)) == target) {
            return true;
        }
    } while (ancestor.size() > rootLength);
    return false;
}

std::optional<TFileIdentity> TLinkLoopCheck::KnownIdentityOf(const std::wstring& path) {
    const auto [entry, isNew] = known_.try_emplace(path);
    if (isNew) {
        entry->second = FileIdentity(calls_, path);
    }
    return entry->second;
}
