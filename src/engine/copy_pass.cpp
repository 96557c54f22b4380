// The half of a run that copies: its pass over the files that wait.
#include <chrono>
#include <exception>
#include <iterator>
#include <utility>
#include <vector>

#include "engine/copy_run.h"
#include "engine/destination_wait.h"
#include "engine/error_log.h"
#include "engine/file_size_text.h"
#include "engine/tdm.h"
#include "engine/thread_manner.h"
#include "hashdb/destination_folder.h"
#include "support/case_folding.h"
#include "support/path_hash.h"
#include "support/path_text.h"
#include "support/system_error.h"
#include "texts/problem_text.h"
#include "texts/run_texts.h"

namespace {

constexpr unsigned kInterruptionsOfOneFile = 3;
// Milliseconds between two looks at the window's messages while a copy is waited for.
constexpr std::uint32_t kLookInterval = 30;
// How long a copy that is under way at a stop may take, and how long one that is broken off then.
constexpr std::chrono::seconds kWaitForCopies{5};
constexpr std::uint32_t kWaitForFreedCopies = 2000;  // milliseconds
// How long the lines about those that failed so may take.
constexpr std::chrono::seconds kWaitForLastLines{2};

// "report.txt" for "report #001.txt".
std::wstring WithoutNumber(std::wstring_view path) {
    const std::wstring_view extension = ExtensionPart(path);
    const std::wstring_view base = path.substr(0, path.size() - extension.size());
    return std::wstring(IsNumberedName(FileNamePart(path)) ? base.substr(0, base.rfind(L" #")) : base) +
           std::wstring(extension);
}

}  // namespace

void TCopyRun::CopyFiles() {
    CopyWaitingFiles();
    if (CopyFileList.empty() && !FScanTask && !triedAgain_ && !stopped_ && !isLost_) {
        TakeFailedFilesAgain();
        CopyWaitingFiles();
        TellLostFolders();
    }
    if (FScanTask && !checks_ && !stopped_ && !waitTask_) {
        Report(kSearchingText, TMessagePos::Status);
    }
}

void TCopyRun::CopyWaitingFiles() {
    for (;;) {
        BeginFiles();
        if (stopped_) {
            return FinishFiles(with_.whileWaiting);
        }
        if (!underWay_.empty()) {
            if (!TakeFile(kLookInterval)) {
                TellWhatIsWaitedFor();
                TellProgress();
                with_.whileWaiting();
            }
            TakeErrorLines(0);
        } else if (!interrupted_.empty()) {
            AwaitDestination();
        } else if (errorLines_ && errorLines_->Count() > 0) {
            TakeErrorLines(kLookInterval);
            with_.whileWaiting();
        } else if (CopyFileList.empty() || waitTask_) {
            return;
        }
    }
}

// Whether they are still there was not asked for every file that was missing.
void TCopyRun::TellLostFolders() {
    TJobsInOrder<std::vector<TProblem>> asking(1, &BreakOffCallsOfThisThread);
    asking.Add([roots = sourceRoots_] { return roots->AskOwed(); });
    std::optional<std::vector<TProblem>> problems;
    while (!stopped_ && !(problems = asking.TakeFirst(kLookInterval))) {
        with_.whileWaiting();
    }
    for (const TProblem& problem : problems.value_or(std::vector<TProblem>())) {
        if (!stopped_) {
            ReportFailure(problem);
        }
    }
    asking.End(kWaitForFreedCopies, with_.whileWaiting);
}

// What stood in the way may be gone: a disk that was full for a while, a program that had a file to itself.
void TCopyRun::TakeFailedFilesAgain() {
    triedAgain_ = true;
    for (std::wstring& source : std::exchange(failedFiles_, {})) {
        CopyFileList.push_back(std::move(source));
    }
}

void TCopyRun::BeginFiles() {
    // At the second attempt one at a time: a file that is too large for the room left takes it from no other.
    const std::size_t most = triedAgain_ ? 1 : mostUnderWay_;
    while (!CopyFileList.empty() && underWay_.size() < most && interrupted_.empty() && !waitTask_ &&
           !stopped_) {
        const std::shared_ptr<TCopyJob> job = NextJob();
        if (!targetsUnderWay_.insert(job->targetKey).second) {
            return;
        }
        CopyFileList.pop_front();
        folder_ = job->folder;
        underWay_.push_back(job);
        copies_->Add([ground = ground_, job] { return DoCopyJob(*ground, *job); });
    }
}

std::shared_ptr<TCopyJob> TCopyRun::NextJob() const {
    auto job = std::make_shared<TCopyJob>();
    job->source = CopyFileList.front();
    std::wstring folder(
        RemoveTrailingSeparator(DestinationFolder(destination_.nas, destination_.host, job->source)));
    job->target = folder + L"\\" + std::wstring(FileNamePart(job->source));
    // The current row's switch counts, whichever row the file comes from. A bad copy, which only a check
    // sends here, may be the better one: it is kept.
    job->moveAside = checks_ || with_.memData.Current().History.value_or(false);
    // An earlier copy that is moved aside may get the name of another file.
    job->targetKey = FoldedCase(job->moveAside ? WithoutNumber(job->target) : job->target);
    job->folder =
        folder_ && folder_->Path() == folder ? folder_ : std::make_shared<TFolderToMake>(std::move(folder));
    return job;
}

bool TCopyRun::TakeFile(std::uint32_t maxWait) {
    const std::shared_ptr<TCopyJob> job = underWay_.front();
    std::optional<TCopyOutcome> outcome;
    std::exception_ptr mistake;
    try {
        outcome = (largeAtHand_ ? largeCopy_ : copies_)->TakeFirst(maxWait);
        if (!outcome) {
            return false;
        }
        if (outcome->kind == TCopyOutcome::TKind::Large && !stopped_) {
            BeginLargeFile(job, outcome->attributes);
            return true;
        }
    } catch (...) {
        if (!stopped_) {
            mistake = std::current_exception();
        } else {
            // Whoever ends the run is not to fail at it.
            outcome = {.kind = TCopyOutcome::TKind::CopyFailed, .error = ERROR_INTERNAL_ERROR};
        }
    }
    largeAtHand_ = false;
    underWay_.pop_front();
    targetsUnderWay_.erase(job->targetKey);
    if (mistake) {
        std::rethrow_exception(mistake);
    }
    FileDone(*job, *outcome);
    return true;
}

void TCopyRun::TellWhatIsWaitedFor() {
    const std::shared_ptr<TCopyJob> job = underWay_.front();
    if (job->isThere && !std::exchange(job->isTold, true)) {
        Report(job->source, TMessagePos::Status);
    }
}

// What is under way when the run is stopped has some seconds to end; then it is freed from what it is stuck
// in, and left to itself when that does not help either.
void TCopyRun::FinishFiles(const std::function<void()>& whileWaiting) {
    if (!copies_ || filesAreFinished_) {
        return;
    }
    FinishFilesWithin(kWaitForCopies, whileWaiting);
    if (filesAreFinished_) {
        return;
    }
    ground_->givenUp = true;
    progress_->Close(PROGRESS_STOP);
    largeCopy_->End(kWaitForFreedCopies, whileWaiting);
    copies_->End(kWaitForFreedCopies, whileWaiting);
    while (!underWay_.empty()) {
        if (!TakeFile(0)) {
            const std::shared_ptr<TCopyJob> job = underWay_.front();
            underWay_.pop_front();
            // Those behind it have results of their own.
            (std::exchange(largeAtHand_, false) ? largeCopy_ : copies_)->LeaveFirst();
            if (job->begun) {
                FileDone(*job, {.kind = TCopyOutcome::TKind::CopyFailed, .error = ERROR_TIMEOUT});
            }
        }
    }
    FinishFilesWithin(kWaitForLastLines, whileWaiting);
    errorLines_->End(kWaitForFreedCopies, whileWaiting);
    TakeErrorLines(0);
    filesAreFinished_ = true;
}

void TCopyRun::FinishFilesWithin(std::chrono::seconds time, const std::function<void()>& whileWaiting) {
    // Asked again after each wait, which may have let in a call that finishes them all.
    const auto waits = [this] {
        return !filesAreFinished_ && (!underWay_.empty() || errorLines_->Count() > 0);
    };
    const auto until = std::chrono::steady_clock::now() + time;
    while (waits() && std::chrono::steady_clock::now() < until) {
        const bool hasTaken = !underWay_.empty() && TakeFile(kLookInterval);
        TakeErrorLines(underWay_.empty() ? kLookInterval : 0);
        if (!hasTaken) {
            TellProgress();
            if (whileWaiting) {
                whileWaiting();
            }
        }
    }
}

void TCopyRun::FileDone(TCopyJob& job, const TCopyOutcome& outcome) {
    using enum TCopyOutcome::TKind;
    if (outcome.kind == NotBegun || outcome.kind == Large) {
        if (!stopped_) {
            interrupted_.push_back(job.source);
        }
        return;
    }
    if (outcome.kind == SourceMissing) {
        if (outcome.lostFolder) {
            ReportFailure(*outcome.lostFolder);
        }
        // A whole tree may be missing, without a report.
        return with_.whileWaiting();
    }
    if (!std::exchange(job.isTold, true)) {
        Queue(job.source, TMessagePos::Status);
    }
    if (outcome.destinationIsGone && !stopped_) {
        // Each further file would wait out the network. The file waits with the others until it answers; a
        // drop-out of some seconds is no reason to end a night's run.
        interrupted_.push_back(job.source);
    } else if (outcome.kind == FolderFailed) {
        FolderNotMade(job, outcome.error);
    } else {
        if (outcome.kind == Copied) {
            FileCopied(job, outcome);
        } else {
            FileFailed(job.source, outcome.error);
        }
        Queue(std::wstring(FileNamePart(job.source)), TMessagePos::FileMsg);
    }
    ReportQueued();
}

void TCopyRun::BeginLargeFile(const std::shared_ptr<TCopyJob>& job, const TAttributes& attributes) {
    largeCopy_->Add([ground = ground_, job, attributes, progress = progress_] {
        return ground->stopped || ground->destinationIsGone
                   ? TCopyOutcome()
                   : CopyWithProgress(*ground, *job, attributes, &AskForProgress, progress.get());
    });
    largeAtHand_ = true;
}

// The window may process its messages in between, and with them a stop: that answers, too.
void TCopyRun::TellProgress() {
    progress_->AnswerBy([this](const TProgressCall& call) -> DWORD {
        if (stopped_ && !CopyIdle) {
            return PROGRESS_STOP;  // the window shows the progress of the next run
        }
        return CopyProgressRoutine(call.totalSize, call.transferred, {}, {}, 0, call.reason, nullptr, nullptr,
                                   with_.progressWindow);
    });
}

// Only the run's log tells of a folder that cannot be made.
void TCopyRun::FolderNotMade(const TCopyJob& job, TErrorCode error) {
    const std::wstring& folder = job.folder->Path();
    if (std::exchange(refusedFolder_, folder) != folder) {
        log_.Problem({.what = TProblemKind::FolderNotMade, .path = folder, .code = error});
    }
    log_.Problem({.what = TProblemKind::CopyFailed, .path = job.source, .code = error});
    failedFiles_.push_back(job.source);
}

void TCopyRun::FileCopied(const TCopyJob& job, const TCopyOutcome& outcome) {
    ++copiedFiles_;
    CopiedBytes += outcome.copied.bytes;
    with_.nasData.RecordCopiedFile(PathDigest(job.source),
                                   localTime_.ToLocal(outcome.attributes.data.ftLastWriteTime));
    if (!checks_) {
        Queue(TDM::FormatFileSize(static_cast<double>(CopiedBytes)), TMessagePos::Bytes);
    }
    Queue(job.source, TMessagePos::Memo);
}

void TCopyRun::FileFailed(const std::wstring& source, TErrorCode error) {
    const TProblem problem{.what = TProblemKind::CopyFailed, .path = source, .code = error};
    log_.Problem(problem);
    failedFiles_.push_back(source);
    if (triedAgain_) {
        // It has its row and its line from the first attempt.
        return;
    }
    Queue(source, TMessagePos::Error, ProblemText(problem, &SystemErrorText));
    WriteErrorLine(source);
}

void TCopyRun::WriteErrorLine(const std::wstring& source) {
    errorLines_->Add([&calls = with_.calls, log = destination_.ErrorLog(), text = ErrorLogText(source)] {
        return WriteErrorLog(calls, log, text);
    });
}

void TCopyRun::TakeErrorLines(std::uint32_t maxWait) {
    while (const std::optional<TErrorCode> error = errorLines_->TakeFirst(maxWait)) {
        if (*error != ERROR_SUCCESS && !std::exchange(errorLogFailed_, true)) {
            // One row is enough, however many lines cannot be written.
            ReportFailure(
                {.what = TProblemKind::FileNotWritten, .path = destination_.ErrorLog(), .code = *error});
        }
    }
}

void TCopyRun::AwaitDestination() {
    const std::wstring first = interrupted_.front();
    CopyFileList.insert(CopyFileList.begin(), std::make_move_iterator(interrupted_.begin()),
                        std::make_move_iterator(interrupted_.end()));
    interrupted_.clear();
    ground_->destinationIsGone = false;
    interruptions_ = first == interruptedAt_ ? interruptions_ + 1 : 1;
    interruptedAt_ = first;
    if (interruptions_ > kInterruptionsOfOneFile) {
        return DestinationLost();
    }
    cameBack_ = std::make_shared<bool>(false);
    waitTask_ = MakeTask(
        [cameBack = cameBack_, folder = destination_.HostFolder(), &calls = with_.calls](IOmniTask& task) {
            *cameBack = AwaitFolder(calls, folder, kLongestDropOut, task).IsFolder();
        },
        L"AwaitDestination", TTaskPriority::Normal);
    waitTask_->Run();
    Report(WaitingForDestinationText(destination_.nas), TMessagePos::Status);
}

// The run is brought to its end; the next one copies what is missing.
void TCopyRun::DestinationLost() {
    isLost_ = true;
    const std::size_t waiting = CopyFileList.size();
    CopyFileList.clear();
    if (FScanTask) {
        FScanTask->Terminate(0);
    }
    Queue({}, TMessagePos::Status);  // it is not waited for any more
    ReportFailure(
        {.what = TProblemKind::DestinationLost, .path = destination_.HostFolder(), .number = waiting});
}
