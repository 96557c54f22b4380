// The background half of a run: finds the files that must be copied.
#pragma once

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "engine/extension_filter.h"
#include "engine/task_runtime.h"
#include "hashdb/destination_listing.h"
#include "hashdb/hash_table.h"
#include "store/source_folder_table.h"
#include "support/file_access.h"
#include "support/file_times.h"
#include "support/link_loop.h"
#include "support/platform_calls.h"

// The messages that a scan task sends to the window's thread.
enum class TScanMessage : std::uint16_t {
    StatusText = 1,    // text, shown as the current path
    MemoText = 2,      // text, shown as a row
    IgnoreText = 3,    // text, shown as a grey row: the closing count
    Number = 4,        // integer, shown in the current-file field
    FilesToCopy = 10,  // list of full source paths; never empty
    Problem = 11,      // problem, shown as an error row: something could not be read
    Compared = 12,     // source folder of a row and its number of files, for the run log
};

// What the scan works on. Tables come as copies that nobody writes any more.
struct TScanParameters {
    std::shared_ptr<const std::vector<SourceFolderRow>> dataSet;
    std::shared_ptr<const THashSnapshot> nasData;
    std::wstring nas;
    std::wstring host;
};

// Walks the active source folders, decides per file whether it must be copied, and sends the paths to copy
// in one list per folder. Runs on the task's thread; copies nothing and writes no table.
class TFolderScan {
public:
    TFolderScan(IOmniTask& task, const TPlatformCalls& calls, TScanParameters parameters);

    // The whole scan, with its closing message in every case. An exception ends it with an error row.
    void Run();

private:
    void CollectAllFolders();
    void ScanFolder(const std::wstring& folder);
    void FindFilesToCopy(const std::wstring& folder, TStringList& filesToCopy);
    bool MustCopy(const TDestinationListing& destination, const WIN32_FIND_DATAW& file,
                  std::wstring_view path) const;
    void TellIncomplete(const std::wstring& folder, TErrorCode error);

    IOmniTask& task_;
    const TPlatformCalls& calls_;
    const TScanParameters parameters_;
    const TLocalTimeRule localTime_;
    std::vector<std::wstring> folders_;
    // The filter of the last active row whose folder exists: it rules the files of all folders.
    TExtensionFilter filter_;
    TLinkLoopCheck linkLoops_;
    std::set<std::wstring> toldFolders_;
    std::int64_t fileCount_ = 0;
};
