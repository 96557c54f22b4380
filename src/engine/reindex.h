// Rebuilding hash records from a backup that an earlier version made.
#pragma once

#include <functional>
#include <string>

#include "hashdb/hash_table.h"
#include "store/source_folder_table.h"
#include "support/platform_calls.h"

// Who hears of the progress, and who may end it.
struct TReindexReports {
    std::function<void(const std::wstring& folder)> folderFound;
    std::function<void(const std::wstring& folder)> folderBegun;
    std::function<void(const std::wstring& fileName)> fileIndexed;
    std::function<bool()> stopRequested;
};

// Appends a hash record, dated with its copy, for every file of the active source folders whose copy exists
// below `nas`\`host`. Contents are not read. Walks the source-folder table from its current row to its end,
// and only sub-folders are indexed: files that lie directly in a source folder are left out on purpose.
void ReindexSourceFolders(const TPlatformCalls& calls, TSourceFolderTable& sourceFolders,
                          THashTable& hashTable, const std::wstring& nas, const std::wstring& host,
                          const TReindexReports& reports);
