// The half of a run that checks the backup.
#include "engine/copy_run.h"

#include <utility>

#include "engine/copy_job.h"
#include "engine/file_size_text.h"
#include "engine/message_kind.h"
#include "engine/tdm.h"
#include "engine/thread_manner.h"
#include "engine/verify_scan.h"
#include "store/seen_tables.h"
#include "support/system_error.h"
#include "texts/problem_text.h"
#include "texts/run_texts.h"

namespace {

void SendValue(HWND window, UINT message, std::uint64_t value) {
    SendMessageW(window, message, static_cast<WPARAM>(value & 0xFFFFFFFF), static_cast<LPARAM>(value >> 32));
}

}  // namespace

bool TCopyRun::BeginCheck() {
    // Without a claim the destination was not reached.
    if (!order_.check || checks_ || stopped_ || isLost_ || !claim_) {
        return false;
    }
    checks_ = true;
    // What is made anew and fails is tried once more, too. What could not be copied before was.
    triedAgain_ = false;
    notCopied_ = std::exchange(failedFiles_, {}).size();
    if (!records_) {
        records_ = with_.nasData.Snapshot();
        recordsAreKnown_ = with_.nasData.RecordCount() != 0;
    }
    slice_ = {.percent = order_.check->percent};
    if (slice_.percent < 100) {
        slice_.first = VerifiedUpTo(with_.calls, with_.configurationFolder, destination_.TableFile());
    }
    FScanTask =
        MakeTask([&calls = with_.calls, parameters = TVerifyParameters{.dataSet = with_.memData.Rows(),
                                                                       .nasData = records_,
                                                                       .recordsAreKnown = recordsAreKnown_,
                                                                       .nas = destination_.nas,
                                                                       .host = destination_.host,
                                                                       .slice = slice_,
                                                                       .repair = order_.check->repair,
                                                                       .parallel = parallel_,
                                                                       .sourceRoots = sourceRoots_}](
                     IOmniTask& task) { TVerifyScan(task, calls, parameters).Run(); },
                 L"VerifyFiles", TTaskPriority::Normal);
    FScanTask->Run();
    Report(kCheckingText, TMessagePos::Status);
    return true;
}

void TCopyRun::CheckIsAt(const TVerifyProgress& progress) {
    Report(progress.path, TMessagePos::Status);
    Report(TDM::FormatFileSize(static_cast<double>(progress.bytes)), TMessagePos::Bytes);
    if (with_.progressWindow == nullptr) {
        return;
    }
    if (progress.size >= static_cast<std::uint64_t>(kProgressThreshold)) {
        SendValue(with_.progressWindow, kProgressMaximumMessage, progress.size);
        SendValue(with_.progressWindow, kProgressPositionMessage, progress.done);
    } else {
        SendValue(with_.progressWindow, kProgressResetMessage, 0);
    }
}

void TCopyRun::CheckHasEnded(const TVerifyCounts& counts) {
    Report({}, TMessagePos::Status);
    Report(TDM::FormatFileSize(static_cast<double>(counts.bytes)), TMessagePos::Bytes);
    if (with_.progressWindow != nullptr) {
        SendValue(with_.progressWindow, kProgressResetMessage, 0);
    }
    const std::wstring text = VerifiedText(counts);
    log_.Note(text);
    Report(text, TMessagePos::Ignore);
    if (counts.isComplete && slice_.percent < 100) {
        const TErrorCode error =
            RememberVerified(with_.calls, with_.configurationFolder, destination_.TableFile(), slice_.Next());
        if (error != ERROR_SUCCESS) {
            ReportFailure({.what = TProblemKind::FileNotSaved,
                           .path = SeenTablesFile(with_.configurationFolder),
                           .code = error});
        }
    }
}

void TCopyRun::TellBadCopy(const TProblem& problem) {
    ++badCopies_;
    log_.Problem(problem);
    Report(problem.path, TMessagePos::Error, ProblemText(problem, &SystemErrorText));
}
