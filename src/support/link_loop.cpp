#include "support/link_loop.h"

#include "support/path_text.h"

bool TLinkLoopCheck::LeadsBackToAncestor(const std::wstring& path) {
    const auto target = IdentityOf(path);
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
        if (IdentityOf(std::wstring(ancestor)) == target) {
            return true;
        }
    } while (ancestor.size() > rootLength);
    return false;
}

std::optional<TLinkLoopCheck::TIdentity> TLinkLoopCheck::IdentityOf(const std::wstring& path) {
    const auto [entry, isNew] = known_.try_emplace(path);
    if (!isNew) {
        return entry->second;
    }
    // Opened without access rights: only the identity is asked for. Folders need the backup flag.
    const HANDLE folder = calls_.CreateFileW(ExtendedPath(path).c_str(), 0,
                                             FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                             OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (folder == INVALID_HANDLE_VALUE) {
        return std::nullopt;
    }
    BY_HANDLE_FILE_INFORMATION information{};
    if (calls_.GetFileInformationByHandle(folder, &information)) {
        const std::uint64_t index =
            static_cast<std::uint64_t>(information.nFileIndexHigh) << 32 | information.nFileIndexLow;
        if (index != 0) {
            // A file system without such numbers answers 0 for every folder.
            entry->second = TIdentity{information.dwVolumeSerialNumber, index};
        }
    }
    calls_.CloseHandle(folder);
    return entry->second;
}
