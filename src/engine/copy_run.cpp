#include "engine/copy_run.h"

#include <chrono>
#include <exception>
#include <utility>

#include "engine/scan_folders.h"
#include "engine/thread_manner.h"
#include "support/date_time_text.h"
#include "support/system_error.h"
#include "texts/problem_text.h"
#include "texts/run_texts.h"

namespace {

// Milliseconds. What prepares changes nothing that a run needs, so nobody has to wait for its end.
constexpr std::uint32_t kWaitForPreparation = 50;
constexpr std::uint32_t kWaitForTask = 5000;

// How many files may be copied and not yet told while the first of them takes its time.
constexpr std::size_t kUntoldForEachThread = 4;

// What a check has found counts also when it does not come to its end.
bool IsResultOfCheck(const TTaskValue& value) {
    const auto* problem = std::get_if<TProblem>(&value);
    return std::holds_alternative<TVerifyCounts>(value) || (problem != nullptr && IsBadCopy(problem->what));
}

bool Controls(const std::unique_ptr<IOmniTaskControl>& control, const IOmniTask& task) {
    return control && control->Task().get() == &task;
}

}  // namespace

TCopyRun::TCopyRun(TRunSurroundings surroundings)
    : with_(std::move(surroundings)),
      log_(with_.calls, with_.configurationFolder),
      startTime_(with_.calls.GetTickCount64()),
      sourceRoots_(std::make_shared<TSourceRoots>(with_.calls)) {
    log_.Begin(CurrentDateTime());
}

TCopyRun::~TCopyRun() {
    Stop();
    if (progress_) {
        ground_->givenUp = true;
        progress_->Close(PROGRESS_STOP);
    }
    EndTheTasks({});
}

std::unique_ptr<IOmniTaskControl> TCopyRun::MakeTask(TTaskMethod method, std::wstring name,
                                                     TTaskPriority priority) {
    auto task = std::make_unique<IOmniTaskControl>(std::move(method), std::move(name));
    task->MonitorWith(with_.monitor);
    task->SetPriority(priority, &ApplyThreadPriority);
    task->BreakOffWith(&BreakOffCallsOfThisThread);
    return task;
}

void TCopyRun::Prepare(TRunSettings settings) {
    destination_ = {.nas = std::move(settings.nas), .host = with_.hostName};
    order_ = settings.order;
    fetchCloudFiles_ = settings.fetchCloudFiles;
    parallel_ = settings.parallel;
    ground_ = std::make_shared<TCopyGround>(with_.calls, sourceRoots_, destination_.HostFolder());
    copies_ = std::make_unique<TJobsInOrder<TCopyOutcome>>(parallel_, &BreakOffCallsOfThisThread);
    largeCopy_ = std::make_unique<TJobsInOrder<TCopyOutcome>>(1, &BreakOffCallsOfThisThread);
    progress_ = std::make_shared<TProgressQuestion>(largeCopy_->WakeUp());
    errorLines_ = std::make_unique<TJobsInOrder<TErrorCode>>(1, &BreakOffCallsOfThisThread);
    mostUnderWay_ = parallel_ == 1 ? 1 : parallel_ * kUntoldForEachThread;
    log_.Destination(destination_.HostFolder());
    preparation_ = std::make_shared<TPreparation>();
    const auto order = std::make_shared<TPreparationOrder>();
    order->destination = destination_;
    order->configurationFolder = with_.configurationFolder;
    order->unattended = with_.unattended;
    order->onlyReads = order_.ChangesNothing();
    // Where nothing was ever copied to, everything would be missing, and made anew on a wrong disk.
    order->makesFolder = order_.copy;
    if (settings.useConnect) {
        order->logon = with_.shareLogon;
        order->user = std::move(settings.user);
        order->password = std::move(settings.password);
    }
    preparationTask_ = MakeTask(
        [order, result = preparation_, &calls = with_.calls](IOmniTask& task) {
            try {
                *result = PrepareRun(calls, *order, task);
            } catch (const std::exception& error) {
                result->broken = ProblemOf(error);
            }
        },
        L"PrepareRun", TTaskPriority::Normal);
    preparationTask_->Run();
}

bool TCopyRun::BeginScan() {
    const std::shared_ptr<TPreparation> prepared = std::exchange(preparation_, nullptr);
    Report({}, TMessagePos::Status);
    if (stopped_) {
        return true;  // from within the report
    }
    if (prepared->notReached) {
        const TProblem& problem = *prepared->notReached;
        if (!order_.copy) {
            ReportFailure(problem);
            return true;
        }
        log_.Problem(problem);
        Report(ProblemText(problem, &SystemErrorText), TMessagePos::Memo,
               ProblemReason(problem, &SystemErrorText));
        return false;
    }
    for (const TProblem& problem : prepared->told) {
        ReportFailure(problem);
    }
    if (stopped_) {
        return true;
    }
    if (prepared->broken) {
        ReportFailure(*prepared->broken);
        return true;
    }
    claim_ = std::move(prepared->claim);
    if (order_.ChangesNothing()) {
        const THashTable none;
        const THashTable& table = prepared->table ? *prepared->table : none;
        records_ = table.Snapshot();
        recordsAreKnown_ = table.RecordCount() != 0;
    } else {
        with_.nasDataFile.Loaded(destination_.TableFile(), prepared->table.get());
    }
    if (!order_.copy) {
        BeginCheck();
        return true;
    }

    // The tables come as copies: no thread ever reads what another one writes.
    FScanTask = MakeTask(
        [&calls = with_.calls, fetchCloudFiles = fetchCloudFiles_, roots = sourceRoots_,
         parallel = parallel_](IOmniTask& task) {
            TFolderScan(task, calls,
                        {task.Parameter<std::shared_ptr<const std::vector<SourceFolderRow>>>(L"DataSet"),
                         task.Parameter<std::shared_ptr<const THashSnapshot>>(L"NasData"),
                         task.Parameter<std::wstring>(L"NAS"),
                         task.Parameter<std::wstring>(L"HOST"),
                         fetchCloudFiles,
                         roots,
                         {.atATime = parallel}})
                .Run();
        },
        L"ScanFolders", TTaskPriority::Highest);
    FScanTask->SetParameter(L"DataSet",
                            std::shared_ptr<const std::vector<SourceFolderRow>>(
                                std::make_shared<std::vector<SourceFolderRow>>(with_.memData.Rows())));
    FScanTask->SetParameter(L"NasData", with_.nasData.Snapshot());
    FScanTask->SetParameter(L"NAS", destination_.nas);
    FScanTask->SetParameter(L"HOST", destination_.host);
    FScanTask->Run();
    return true;
}

bool TCopyRun::Owns(const IOmniTask& task) const {
    return Controls(preparationTask_, task) || Controls(FScanTask, task) || Controls(waitTask_, task) ||
           &task == endedCheck_.get();
}

void TCopyRun::TaskSent(TTaskMessage& message) {
    if ((stopped_ || isLost_) && !IsResultOfCheck(message.value)) {
        return;
    }
    if (const auto* problem = std::get_if<TProblem>(&message.value)) {
        TellProblem(*problem);
    } else if (const auto* compared = std::get_if<TComparedFolder>(&message.value)) {
        log_.SourceFolder(compared->path, static_cast<std::uint64_t>(compared->files));
    } else if (const auto* unchanged = std::get_if<std::unique_ptr<TUnchangedList>>(&message.value)) {
        for (const TUnchangedFile& file : **unchanged) {
            with_.nasData.RecordCopiedFile(file.hash, file.date);
        }
    } else if (const auto* progress = std::get_if<TVerifyProgress>(&message.value)) {
        CheckIsAt(*progress);
    } else if (const auto* counts = std::get_if<TVerifyCounts>(&message.value)) {
        CheckHasEnded(*counts);
    } else if (const auto* count = std::get_if<std::int64_t>(&message.value)) {
        log_.Note(CloudFilesText(*count));
    } else if (auto* files = std::get_if<std::unique_ptr<TStringList>>(&message.value)) {
        CopyFileList.insert(CopyFileList.end(), std::make_move_iterator((*files)->begin()),
                            std::make_move_iterator((*files)->end()));
    }
}

void TCopyRun::TellProblem(const TProblem& problem) {
    if (IsBadCopy(problem.what)) {
        return TellBadCopy(problem);
    }
    // A check after copying walks the same way, and sees the same on it.
    if (order_.copy && order_.check && !told_.emplace(problem.what, problem.path).second) {
        return;
    }
    switch (problem.what) {
        case TProblemKind::SourceFolderMissing:
            // The window stays silent about it: a disk that is not plugged in today is nothing to wonder at.
            ++missingFolders_;
            return log_.Problem(problem);
        case TProblemKind::BackupInSource:
        case TProblemKind::SourceInUse:
            // Left out on purpose, or not to be told good from bad: nothing is missing in the backup.
            log_.Problem(problem);
            return Report(ProblemText(problem, &SystemErrorText), TMessagePos::Ignore);
        default:
            return ReportFailure(problem);
    }
}

bool TCopyRun::TaskEnded(const IOmniTask& task) {
    if (Controls(preparationTask_, task)) {
        preparationTask_.reset();
        return true;
    }
    if (Controls(FScanTask, task)) {
        FScanTask.reset();
    } else if (Controls(waitTask_, task)) {
        waitTask_.reset();
        if (!stopped_ && !*cameBack_) {
            DestinationLost();
        }
    }
    return false;
}

bool TCopyRun::HasWork() const {
    return preparationTask_ || FScanTask || waitTask_ || !CopyFileList.empty();
}

void TCopyRun::Stop() {
    stopped_ = true;
    if (ground_) {
        ground_->stopped = true;
    }
    for (const auto* task : {&preparationTask_, &FScanTask, &waitTask_}) {
        if (*task) {
            (*task)->Terminate(0);
        }
    }
}

void TCopyRun::EndTasks(const std::function<void()>& whileWaiting) {
    const bool isWaiting = preparationTask_ || waitTask_;
    Stop();
    FinishFiles(whileWaiting);
    EndTheTasks(whileWaiting);
    if (isWaiting) {
        Report({}, TMessagePos::Status);  // what was waited for
    }
}

void TCopyRun::EndTheTasks(const std::function<void()>& whileWaiting) {
    if (const auto preparation = std::move(preparationTask_)) {
        preparation->Terminate(kWaitForPreparation, whileWaiting);
        // With the claim that it may have taken: nobody asks for it any more.
        preparation_.reset();
    }
    if (checks_ && FScanTask) {
        endedCheck_ = FScanTask->Task();
    }
    for (auto* task : {&FScanTask, &waitTask_}) {
        if (const std::unique_ptr<IOmniTaskControl> ending = std::move(*task)) {
            ending->Terminate(kWaitForTask, whileWaiting);
        }
    }
}

void TCopyRun::Report(const std::wstring& text, TMessagePos kind, const std::wstring& reason) {
    Queue(text, kind, reason);
    ReportQueued();
}

void TCopyRun::Queue(const std::wstring& text, TMessagePos kind, const std::wstring& reason) {
    reports_.push_back({text, kind, reason});
}

void TCopyRun::ReportQueued() {
    while (!reports_.empty()) {
        const TQueuedReport report = std::move(reports_.front());
        reports_.pop_front();
        with_.report(report.text, report.kind, report.reason);
    }
}

void TCopyRun::ReportFailure(const TProblem& problem) {
    ++(problem.what == TProblemKind::FolderIncomplete ? incompleteFolders_ : otherFailures_);
    log_.Problem(problem);
    Report(ProblemText(problem, &SystemErrorText), TMessagePos::Error);
}

void TCopyRun::Close(int exitCode) {
    if (std::exchange(closed_, true)) {
        return;
    }
    log_.End({.copiedFiles = copiedFiles_,
              .copiedBytes = static_cast<std::uint64_t>(CopiedBytes),
              .failedFiles = Failures().files,
              .duration = std::chrono::milliseconds(with_.calls.GetTickCount64() - startTime_),
              .exitCode = exitCode,
              .onlyChecked = !order_.copy});
    claim_.reset();
}
