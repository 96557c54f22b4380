#include "engine/reindex.h"

#include "engine/source_walk.h"
#include "hashdb/destination_folder.h"
#include "hashdb/destination_listing.h"
#include "support/file_times.h"
#include "support/path_hash.h"

void ReindexSourceFolders(const TPlatformCalls& calls, TSourceFolderTable& sourceFolders,
                          THashTable& hashTable, const std::wstring& nas, const std::wstring& host,
                          const TReindexReports& reports) {
    TSourceRoots roots(calls);
    TSourceWalk walk(
        calls, roots, nas, host, TSourceWalkKind::Reindex,
        {.problem = {}, .folderFound = reports.folderFound, .stopRequested = reports.stopRequested});
    for (; !sourceFolders.Eof(); sourceFolders.Next()) {
        walk.Add(sourceFolders.Current());
        if (reports.stopRequested()) {
            break;
        }
    }
    const TLocalTimeRule localTime;
    for (const TSourceFolder& folder : walk.Folders()) {
        if (reports.stopRequested()) {
            return;
        }
        reports.folderBegun(folder.path);
        TDestinationListing destination(calls, DestinationOfFilesIn(nas, host, folder.path));
        walk.ListFiles(folder, [&](const WIN32_FIND_DATAW& file) {
            if (const auto copy = destination.CopyOf(file.cFileName)) {
                hashTable.Append(PathDigest(folder.path + L"\\" + file.cFileName),
                                 localTime.ToLocal(copy->lastWrite));
                reports.fileIndexed(file.cFileName);
            }
        });
    }
}
