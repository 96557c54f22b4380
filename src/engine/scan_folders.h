// The background half of a run: finds the files that must be copied.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "engine/folder_comparison.h"
#include "engine/folder_pairs.h"
#include "engine/source_roots.h"
#include "engine/task_runtime.h"
#include "hashdb/hash_table.h"
#include "store/source_folder_table.h"
#include "support/file_times.h"
#include "support/platform_calls.h"

class TFolderComparison;

// The messages that a scan task sends to the window's thread.
enum class TScanMessage : std::uint16_t {
    StatusText = 1,    // text, shown as the current path
    MemoText = 2,      // text, shown as a row
    IgnoreText = 3,    // text, shown as a grey row: the closing count
    Number = 4,        // integer, shown in the current-file field
    FilesToCopy = 10,  // list of full source paths; never empty
    Problem = 11,      // problem, shown as a row: something could not be read, or is left out
    Compared = 12,     // source folder of a row and its number of files, for the run log
    Unchanged = 13,    // list of files whose copy is right and whose record is not; never empty
    CloudFiles = 14,   // integer, for the run log: files not fetched from the cloud; never 0
    Verifying = 15,    // how far a check of the backup is
    Verified = 16,     // what came of it
};

// What the scan works on. Tables come as copies that nobody writes any more.
struct TScanParameters {
    std::shared_ptr<const std::vector<SourceFolderRow>> dataSet;
    std::shared_ptr<const THashSnapshot> nasData;
    std::wstring nas;
    std::wstring host;
    // Files that are only in the cloud are copied too, which fetches them.
    bool fetchCloudFiles = false;
    // Shared with whoever copies; none: the scan has its own.
    std::shared_ptr<TSourceRoots> sourceRoots = nullptr;
    TReadAhead readAhead = {};
};

// Walks the active source folders, decides per file whether it must be copied, and sends the paths to copy
// in one list per folder. Runs on the task's thread; copies nothing and writes no table.
class TFolderScan {
public:
    TFolderScan(IOmniTask& task, const TPlatformCalls& calls, TScanParameters parameters);

    // The whole scan, with its closing messages in every case. An exception ends it with an error row.
    void Run();

private:
    void CompareAndSend(TFolderPair& pair);
    void SendFindings(const TSourceFolder& folder, TFolderComparison& comparison);
    void TellCollision(const TSourceFolder& folder, const std::wstring& path);
    void SendSummary();

    IOmniTask& task_;
    const TPlatformCalls& calls_;
    const TScanParameters parameters_;
    const TLocalTimeRule localTime_;
    const std::shared_ptr<TSourceRoots> roots_;
    TFolderPairs folders_;
    std::map<std::size_t, std::int64_t> comparedFiles_;  // by root
    std::int64_t fileCount_ = 0;
    std::int64_t cloudFileCount_ = 0;
};
