// The background half of a check of the backup: compares the source files with their copies.
#pragma once

#include <windows.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/folder_pairs.h"
#include "engine/jobs_in_order.h"
#include "engine/source_roots.h"
#include "engine/task_runtime.h"
#include "engine/verify_file.h"
#include "engine/verify_rules.h"
#include "hashdb/hash_table.h"
#include "store/source_folder_table.h"
#include "support/file_times.h"
#include "support/platform_calls.h"
#include "support/problem.h"

// What a check works on. The table comes as a copy that nobody writes any more.
struct TVerifyParameters {
    std::vector<SourceFolderRow> dataSet;
    std::shared_ptr<const THashSnapshot> nasData;
    bool recordsAreKnown = false;  // the table has records
    std::wstring nas;
    std::wstring host;
    TVerifySlice slice;
    bool repair = false;       // bad copies are sent to be copied
    std::size_t parallel = 8;  // files compared, and folders listed, at the same time
    std::shared_ptr<TSourceRoots> sourceRoots;
};

// Walks the source folders as a run does, and reads the files that pass the filters and their copies, several
// at a time. Sends what is bad as problems, how far it is every now and then (TVerifyProgress), and what came
// of it at its end (TVerifyCounts). Runs on the task's thread; writes nothing.
class TVerifyScan {
public:
    TVerifyScan(IOmniTask& task, const TPlatformCalls& calls, TVerifyParameters parameters);
    TVerifyScan(const TVerifyScan&) = delete;
    TVerifyScan& operator=(const TVerifyScan&) = delete;
    ~TVerifyScan();

    // The whole check, with its closing messages in every case. An exception ends it with an error row.
    void Run();

private:
    // What the jobs need; a job that is stuck outlives the scan.
    struct TShared;
    struct TJob {
        TFileToVerify file;
        std::size_t root = 0;
        std::uint64_t size = 0;  // bytes
        std::atomic<std::uint64_t> done = 0;
        bool wasInDoubt = false;
        unsigned interruptions = 0;
    };
    using TJobPointer = std::shared_ptr<TJob>;
    // Small files share a job: handing over each of them would cost as much as reading it.
    using TBatch = std::vector<TJobPointer>;
    class TFolder;

    void CheckAll();
    void BeginFolder(std::size_t number);
    TFolder FilesOf(TFolderPair& pair);
    void Begin(TBatch batch);
    // Takes the first result, or nothing when the task is asked to stop before there is one.
    void TakeOne();
    void Judge(const TJobPointer& job, const TVerified& verified);
    void JudgeSource(const TJob& job, const TVerified& verified);
    bool MustLookAgain(const TJobPointer& job, const TVerified& verified);
    void TellBad(const TJob& job, const TVerified& verified);
    void TellProgress();
    void TellProblem(TProblem problem);
    std::wstring HostFolder() const { return parameters_.nas + L"\\" + parameters_.host; }

    IOmniTask& task_;
    const TPlatformCalls& calls_;
    const TVerifyParameters parameters_;
    TFolderPairs folders_;
    const std::shared_ptr<TShared> shared_;
    std::deque<TBatch> pending_;                         // those in jobs_
    std::map<std::size_t, std::int64_t> comparedFiles_;  // by root
    TVerifyCounts counts_;
    ULONGLONG lastTold_ = 0;  // milliseconds
    TJobsInOrder<std::vector<TVerified>> jobs_;
};
