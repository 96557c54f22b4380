// The sub-folders of a folder.
#pragma once

#include <functional>
#include <string>

#include "support/file_access.h"
#include "support/link_loop.h"
#include "support/platform_calls.h"

// What is walked into, and who hears of it.
struct TFolderTreeWalk {
    bool hiddenFolders = false;
    // Called for every sub-folder, before its own sub-folders; false ends the walk.
    std::function<bool(const std::wstring& folder)> found;
    // Called for a folder that could not be listed to its end, though it exists; may be empty.
    std::function<void(const std::wstring& folder, TErrorCode error)> incomplete;
};

// Walks the sub-folders of a folder (plain path, no trailing "\"), depth first, in the order of the listings.
// System folders, hidden ones unless asked for, folders whose name begins with a dot and links that lead back
// to a folder above them are left out with all that is in them.
void WalkSubFolders(const TPlatformCalls& calls, TLinkLoopCheck& linkLoops, const std::wstring& folder,
                    const TFolderTreeWalk& walk);
