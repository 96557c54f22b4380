// The walk over the source folders.
#pragma once

#include <windows.h>

#include <cstddef>
#include <functional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "engine/backup_tree.h"
#include "engine/extension_filter.h"
#include "engine/source_roots.h"
#include "store/source_folder_table.h"
#include "support/folder_listing.h"
#include "support/link_loop.h"
#include "support/platform_calls.h"
#include "support/problem.h"

// A folder whose files belong into the backup.
struct TSourceFolder {
    std::wstring path;          // plain, without a trailing "\"
    std::size_t root = 0;       // the row's folder among the TSourceRoots
    bool isRoot = false;        // it is the row's folder itself
    bool sharesTarget = false;  // another folder has a destination that differs in case only, or not at all
};

// The folder that a row means, plain and without a trailing "\"; empty when it names none.
std::wstring FolderOfRow(const TPlatformCalls& calls, const SourceFolderRow& row);

// Which of the rows' folders are walked.
enum class TSourceWalkKind {
    Backup,   // as the rows say; each folder once, also where rows overlap
    Reindex,  // only the sub-folders of every row, never hidden ones, every file, as often as rows name them
};

// Who hears of the walk. Any of them may be empty.
struct TSourceWalkReports {
    // Something is missing, was not read to its end, or is left out.
    std::function<void(TProblem problem)> problem;
    // A sub-folder, as soon as it is found.
    std::function<void(const std::wstring& folder)> folderFound;
    // Asked again and again: whether to go no further.
    std::function<bool()> stopRequested;
};

// The one walk over source folders: which folders the active rows name, in which order, which of their files
// count. First every row is added, then the files are listed folder by folder, because the filter of the last
// active row whose folder exists rules the files of all folders. System folders, hidden ones unless asked
// for, folders whose name begins with a dot, links that lead back to a folder above them and the backup's own
// tree are left out with all that is in them.
class TSourceWalk {
public:
    TSourceWalk(const TPlatformCalls& calls, TSourceRoots& roots, const std::wstring& nas,
                const std::wstring& host, TSourceWalkKind kind, TSourceWalkReports reports);

    // Finds the folders of a row, which come behind those of earlier rows, depth first, in the order of their
    // listings. A row that is not active has none.
    void Add(const SourceFolderRow& row);
    const std::vector<TSourceFolder>& Folders() const { return folders_; }

    // Calls `found` for every file of a folder that passes the filter, hidden and system files too.
    using TFileFound = std::function<void(const WIN32_FIND_DATAW& file)>;
    void ListFiles(const TSourceFolder& folder, const TFileFound& found);
    // From a listing of the folder of which nothing was taken yet.
    void ListFiles(const TSourceFolder& folder, TFolderListing& listing, const TFileFound& found);
    // To be called when all folders are through: tells of row folders that were lost on the way.
    void End();

private:
    void AddFolder(TSourceFolder folder);
    void AddSubFolders(std::size_t root, const std::wstring& folder, bool hiddenFolders);
    bool LeadsAstray(const std::wstring& folder, bool isLink);
    void EndListing(const TSourceFolder& folder, const TFolderListing& listing, bool isEmpty);
    void TellAbsentRow(const std::wstring& folder, const SourceFolderRow& row, TErrorCode error);
    void TellIncomplete(const std::wstring& folder, TErrorCode error);
    void Tell(std::optional<TProblem> problem) const;
    bool MustStop() const { return reports_.stopRequested && reports_.stopRequested(); }

    const TPlatformCalls& calls_;
    TSourceRoots& roots_;
    const std::wstring nas_;
    const std::wstring host_;
    const TSourceWalkKind kind_;
    const TSourceWalkReports reports_;
    TBackupTree backupTree_;
    TLinkLoopCheck linkLoops_;
    TExtensionFilter filter_;
    std::vector<TSourceFolder> folders_;
    // Numbers of folders by the hash of their destination in upper case.
    std::unordered_multimap<std::size_t, std::size_t> byTarget_;
    std::set<std::wstring> toldFolders_;
    bool toldOfBackupTree_ = false;
};
