#include "hashdb/reindex.h"

#include <vector>

#include "hashdb/destination_folder.h"
#include "hashdb/destination_listing.h"
#include "support/file_access.h"
#include "support/file_times.h"
#include "support/folder_listing.h"
#include "support/folder_tree.h"
#include "support/path_hash.h"

namespace {

std::vector<std::wstring> CollectFolders(const TPlatformCalls& calls, TSourceFolderTable& sourceFolders,
                                         const TReindexReports& reports) {
    std::vector<std::wstring> folders;
    TLinkLoopCheck linkLoops(calls);
    while (!sourceFolders.Eof()) {
        const SourceFolderRow& row = sourceFolders.Current();
        const std::wstring folder = row.Folder();
        if (row.Aktive.value_or(false) && FolderExists(calls, folder)) {
            WalkSubFolders(calls, linkLoops, folder,
                           {.hiddenFolders = false,
                            .found =
                                [&](const std::wstring& found) {
                                    if (reports.stopRequested()) {
                                        return false;
                                    }
                                    folders.push_back(found);
                                    reports.folderFound(found);
                                    return true;
                                },
                            .incomplete = {}});
            if (reports.stopRequested()) {
                break;
            }
        }
        sourceFolders.Next();
    }
    return folders;
}

}  // namespace

void ReindexSourceFolders(const TPlatformCalls& calls, TSourceFolderTable& sourceFolders,
                          THashTable& hashTable, const std::wstring& nas, const std::wstring& host,
                          const TReindexReports& reports) {
    const TLocalTimeRule localTime;
    for (const std::wstring& folder : CollectFolders(calls, sourceFolders, reports)) {
        if (reports.stopRequested()) {
            return;
        }
        reports.folderBegun(folder);
        const TDestinationListing destination(calls, DestinationOfFilesIn(nas, host, folder));
        std::wstring path = folder + L"\\";
        const std::size_t folderLength = path.size();
        TFolderListing listing(calls, folder);
        while (listing.Next()) {
            const std::wstring name = listing.Entry().cFileName;
            if (IsFolder(listing.Entry())) {
                continue;
            }
            if (const auto copied = destination.LastWriteOf(name)) {
                path.replace(folderLength, std::wstring::npos, name);
                hashTable.Append(PathDigest(path), localTime.ToLocal(*copied));
                reports.fileIndexed(name);
            }
        }
    }
}
