// One copy run.
#pragma once

#include <windows.h>

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "engine/copy_job.h"
#include "engine/copy_progress.h"
#include "engine/jobs_in_order.h"
#include "engine/message_kind.h"
#include "engine/run_log.h"
#include "engine/run_order.h"
#include "engine/run_preparation.h"
#include "engine/source_roots.h"
#include "engine/task_runtime.h"
#include "engine/verify_rules.h"
#include "hashdb/stored_hash_table.h"
#include "store/settings.h"
#include "store/source_folder_table.h"
#include "support/file_access.h"
#include "support/file_times.h"
#include "support/platform_calls.h"
#include "support/problem.h"

// Takes a report for the window; `reason` is empty, or says why something failed.
using TReportSink =
    std::function<void(const std::wstring& text, TMessagePos kind, const std::wstring& reason)>;

// What a run works with. All of it outlives the run; the calls and the logon also a task that is stuck.
struct TRunSurroundings {
    const TPlatformCalls& calls;
    const std::wstring& hostName;
    const std::wstring& configurationFolder;
    TSourceFolderTable& memData;
    THashTable& nasData;
    TStoredHashTable& nasDataFile;
    std::shared_ptr<TShareLogon> shareLogon;
    TOmniEventMonitor& monitor;
    TReportSink report;
    // Called some ten times a second while a copy is waited for; may process window messages.
    std::function<void()> whileWaiting;
    HWND progressWindow;
    bool unattended;
};

// What a run takes from the settings.
struct TRunSettings {
    std::wstring nas;
    bool useConnect = false;
    TSecret user;
    TSecret password;
    bool fetchCloudFiles = false;
    std::size_t parallel = 1;  // small files copied, and folders listed, at the same time
    TRunOrder order = {};
};

// How much of a run went wrong.
struct TRunFailures {
    std::uint64_t files = 0;      // not copied
    std::uint64_t folders = 0;    // not listed to their end
    std::uint64_t others = 0;     // a table that was not saved, say
    std::uint64_t badCopies = 0;  // found by a check, made anew or not

    // What kept it from doing its work; a copy that is bad did not.
    std::uint64_t Sum() const { return files + folders + others; }
};

// The run from TDM.StartCopy to its end: its destination, its tasks, the list of files that wait, what was
// copied and what failed. A new run is a new object; one that was stopped does nothing more but finish the
// files under way. Belongs to the window's thread.
//
// Files are copied on threads of their own, small ones several at a time, and told and recorded here in the
// order of the list. Wherever this reports or waits, the window may process messages, and with them a stop,
// which tells what is left: so nothing here is remembered across a report but in members.
//
// In turn there run a task that prepares, one that scans, and, while the destination is out of reach for a
// moment, one that waits for it.
class TCopyRun {
public:
    explicit TCopyRun(TRunSurroundings surroundings);
    TCopyRun(const TCopyRun&) = delete;
    TCopyRun& operator=(const TCopyRun&) = delete;
    ~TCopyRun();

    // Looks for the destination and loads its table, on a task.
    void Prepare(TRunSettings settings);
    // Starts the scan, unless the table cannot be read: the run then has nothing left to do. False when the
    // destination was not reached. The problems are reported.
    bool BeginScan();

    // Starts the check of the backup, if the run is to make one and has not. A run that only checks has
    // BeginScan do it.
    bool BeginCheck();

    // Whether a task belongs to this run, and what it sent or that it has ended. Ended is true for the task
    // that prepares.
    bool Owns(const IOmniTask& task) const;
    void TaskSent(TTaskMessage& message);
    bool TaskEnded(const IOmniTask& task);

    // Copies the files that wait, until none is left, the run is stopped or the destination does not answer.
    void CopyFiles();
    // Whether something is still to be done: a task runs, or files wait.
    bool HasWork() const;

    // Copies nothing more. The tasks are asked to end, not waited for.
    void Stop();
    // Stops, tells what comes of the files under way, and waits for the tasks to end, some seconds at most:
    // what is stuck after that in a call of the system is left to itself.
    void EndTasks(const std::function<void()>& whileWaiting);

    // A row about something that failed, which keeps the run from being a success.
    void ReportFailure(const TProblem& problem);
    // Writes the last lines of the run's log. Once.
    void Close(int exitCode);

    const TRunOrder& Order() const { return order_; }
    TRunFailures Failures() const {
        return {notCopied_ + failedFiles_.size(), incompleteFolders_, otherFailures_, badCopies_};
    }
    std::uint64_t MissingFolders() const { return missingFolders_; }

private:
    struct TQueuedReport {
        std::wstring text;
        TMessagePos kind;
        std::wstring reason;
    };

    void Report(const std::wstring& text, TMessagePos kind, const std::wstring& reason = {});
    std::unique_ptr<IOmniTaskControl> MakeTask(TTaskMethod method, std::wstring name, TTaskPriority priority);

    void TellProblem(const TProblem& problem);
    void TellLostFolders();
    void Queue(const std::wstring& text, TMessagePos kind, const std::wstring& reason = {});
    void ReportQueued();
    void EndTheTasks(const std::function<void()>& whileWaiting);

    void CheckIsAt(const TVerifyProgress& progress);
    void CheckHasEnded(const TVerifyCounts& counts);
    void TellBadCopy(const TProblem& problem);
    void CopyWaitingFiles();
    void TakeFailedFilesAgain();
    void BeginFiles();
    std::shared_ptr<TCopyJob> NextJob() const;
    // Tells what came of the first file under way; false when it has not ended after `maxWait` milliseconds.
    bool TakeFile(std::uint32_t maxWait);
    void TellWhatIsWaitedFor();
    void FinishFiles(const std::function<void()>& whileWaiting);
    void FinishFilesWithin(std::chrono::seconds time, const std::function<void()>& whileWaiting);
    void FileDone(TCopyJob& job, const TCopyOutcome& outcome);
    void BeginLargeFile(const std::shared_ptr<TCopyJob>& job, const TAttributes& attributes);
    void TellProgress();
    void FileCopied(const TCopyJob& job, const TCopyOutcome& outcome);
    void FileFailed(const std::wstring& source, TErrorCode error);
    void FolderNotMade(const TCopyJob& job, TErrorCode error);
    void WriteErrorLine(const std::wstring& source);
    void TakeErrorLines(std::uint32_t maxWait);
    void AwaitDestination();
    void DestinationLost();

    const TRunSurroundings with_;
    TRunOrder order_;
    TDestination destination_;
    TRunLog log_;
    const ULONGLONG startTime_;  // milliseconds
    const TLocalTimeRule localTime_;

    std::unique_ptr<IOmniTaskControl> preparationTask_;
    std::shared_ptr<TPreparation> preparation_;
    std::unique_ptr<IOmniTaskControl> FScanTask;
    // Shared with the scan.
    const std::shared_ptr<TSourceRoots> sourceRoots_;
    bool fetchCloudFiles_ = false;
    std::size_t parallel_ = 1;
    // Set while the destination is waited for, with whether it came back.
    std::unique_ptr<IOmniTaskControl> waitTask_;
    std::shared_ptr<bool> cameBack_;
    std::unique_ptr<TDestinationClaim> claim_;

    std::shared_ptr<TCopyGround> ground_;
    std::deque<std::wstring> CopyFileList;
    // Reports that follow, also when the one before them has let in a stop.
    std::deque<TQueuedReport> reports_;
    // The files that were begun and not told, in the order of the list, and their copies.
    std::deque<std::shared_ptr<TCopyJob>> underWay_;
    std::unordered_set<std::wstring> targetsUnderWay_;
    std::unique_ptr<TJobsInOrder<TCopyOutcome>> copies_;
    std::size_t mostUnderWay_ = 1;
    // A large file is copied when it is the first one under way, alone and with its progress.
    std::unique_ptr<TJobsInOrder<TCopyOutcome>> largeCopy_;
    std::shared_ptr<TProgressQuestion> progress_;
    bool largeAtHand_ = false;
    bool filesAreFinished_ = false;
    // Those that failed because the destination is away.
    std::deque<std::wstring> interrupted_;
    // "Error.log" lies on the destination.
    std::unique_ptr<TJobsInOrder<TErrorCode>> errorLines_;
    std::int64_t CopiedBytes = 0;
    std::uint64_t copiedFiles_ = 0;
    // Tried once more at the end of the run.
    std::vector<std::wstring> failedFiles_;
    bool triedAgain_ = false;
    std::uint64_t incompleteFolders_ = 0;
    std::uint64_t otherFailures_ = 0;
    std::uint64_t missingFolders_ = 0;
    std::set<std::pair<TProblemKind, std::wstring>> told_;  // of a run that copies and checks

    // Of the check: whether it has begun, the records it goes by (none yet: those of nasData), its files.
    bool checks_ = false;
    std::shared_ptr<IOmniTask> endedCheck_;  // stopped; what it still sent is told
    std::shared_ptr<const THashSnapshot> records_;
    bool recordsAreKnown_ = false;
    TVerifySlice slice_;
    std::uint64_t badCopies_ = 0;
    std::size_t notCopied_ = 0;  // before it

    bool stopped_ = false;
    bool isLost_ = false;
    bool errorLogFailed_ = false;
    bool closed_ = false;
    // That of the last file begun.
    std::shared_ptr<TFolderToMake> folder_;
    // The last one that could not be made.
    std::wstring refusedFolder_;
    // The file at which the destination was last out of reach, and how often: it is not waited for for ever.
    std::wstring interruptedAt_;
    unsigned interruptions_ = 0;
};
