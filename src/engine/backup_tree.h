// The tree in which the backup of this computer lies.
#pragma once

#include <optional>
#include <string>

#include "support/file_identity.h"
#include "support/platform_calls.h"

// Recognises the tree `nas`\`host` when a walk over source folders meets it, whatever path leads there
// (links, substituted drives, a share's local folder): a backup that backed itself up would grow deeper every
// night. The destination is asked when it is first needed, a source folder only where it can matter.
class TBackupTree {
public:
    TBackupTree(const TPlatformCalls& calls, std::wstring nas, std::wstring host);

    // Whether a row's folder is the tree, lies in it, or is where the tree would keep its copy.
    bool Holds(const std::wstring& folder);
    // Whether a sub-folder of a folder that the tree does not hold is the tree or, being a link, leads into
    // it.
    bool IsEnteredBy(const std::wstring& folder, bool isLink);

private:
    bool LeadsInside(const std::wstring& folder);
    void AskOnce();

    const TPlatformCalls& calls_;
    const std::wstring nas_;
    const std::wstring host_;
    bool isAsked_ = false;
    std::optional<TFileIdentity> identity_;
    std::wstring finalPath_;
};
