// Folder links that would lead a scan round in circles.
#pragma once

#include <optional>
#include <string>
#include <unordered_map>

#include "support/file_identity.h"
#include "support/platform_calls.h"

// Finds out whether a folder that is a reparse point (junction, mount point, directory link, cloud folder)
// leads back to one of the folders above it.
class TLinkLoopCheck {
public:
    explicit TLinkLoopCheck(const TPlatformCalls& calls) : calls_(calls) {}

    // The plain path of the reparse point. False also when the folder's identity cannot be asked for.
    bool LeadsBackToAncestor(const std::wstring& path);

private:
    std::optional<TFileIdentity> KnownIdentityOf(const std::wstring& path);

    const TPlatformCalls& calls_;
    std::unordered_map<std::wstring, std::optional<TFileIdentity>> known_;
};
