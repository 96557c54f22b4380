// The half of a run that copies: its pass over the files that wait.
#include <utility>

#include "engine/copy_progress.h"
#include "engine/copy_run.h"
#include "engine/destination_wait.h"
#include "engine/error_log.h"
#include "engine/file_size_text.h"
#include "engine/safe_copy.h"
#include "engine/tdm.h"
#include "hashdb/destination_folder.h"
#include "support/file_identity.h"
#include "support/path_hash.h"
#include "support/path_text.h"
#include "support/system_error.h"
#include "texts/problem_text.h"
#include "texts/run_texts.h"

namespace {

// Smaller files are copied without telling their progress.
constexpr std::int64_t kProgressThreshold = 64 * 1024 * 1024;  // bytes
constexpr unsigned kInterruptionsOfOneFile = 3;

}  // namespace

void TCopyRun::CopyFiles() {
    CopyWaitingFiles();
    if (CopyFileList.empty() && !FScanTask && !triedAgain_ && !stopped_ && !isLost_) {
        TakeFailedFilesAgain();
        CopyWaitingFiles();
        TellLostFolders();
    }
    if (FScanTask && !stopped_ && !waitTask_) {
        Report(kSearchingText, TMessagePos::Status);
    }
}

void TCopyRun::CopyWaitingFiles() {
    while (!CopyFileList.empty() && !stopped_ && !waitTask_) {
        CopyNextFile();
    }
}

// Whether they are still there was not asked for every file that was missing.
void TCopyRun::TellLostFolders() {
    if (!sourceRoots_) {
        return;  // the run ended before its scan
    }
    for (const TProblem& problem : sourceRoots_->AskOwed()) {
        ReportFailure(problem);
    }
}

// What stood in the way may be gone: a disk that was full for a while, a program that had a file to itself.
void TCopyRun::TakeFailedFilesAgain() {
    triedAgain_ = true;
    for (std::wstring& source : std::exchange(failedFiles_, {})) {
        CopyFileList.push_back(std::move(source));
    }
}

void TCopyRun::CopyNextFile() {
    const std::wstring source = std::move(CopyFileList.front());
    CopyFileList.pop_front();
    // The only question about the source: existence, size and times together.
    TAttributes attributes = QueryAttributes(with_.calls, source);
    if (attributes.Exists() && (attributes.data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
        // What is copied is the file that a link leads to.
        attributes = QueryAttributesBehindLink(with_.calls, source);
    }
    if (attributes.IsFolder() || IsMissing(attributes.error)) {
        // Gone since the scan saw it, alone or with all that is around it.
        if (const auto problem = sourceRoots_->Missed(source)) {
            ReportFailure(*problem);
        }
        return;
    }
    Report(source, TMessagePos::Status);
    if (!attributes.Exists()) {
        // Out of reach is not gone: a file that stays without its copy must be told.
        FileFailed(source, attributes.error);
    } else {
        const std::wstring folder(
            RemoveTrailingSeparator(DestinationFolder(destination_.nas, destination_.host, source)));
        if (!MakeFolder(source, folder)) {
            return;
        }
        CopyOneFile(source, folder, attributes);
    }
    if (!waitTask_) {
        Report(std::wstring(FileNamePart(source)), TMessagePos::FileMsg);
    }
}

// Only the run's log tells of a folder that cannot be made.
bool TCopyRun::MakeFolder(const std::wstring& source, const std::wstring& folder) {
    if (folder == knownFolder_) {
        return true;
    }
    // This computer's folder itself is never made again: when it is missing, so is the destination's disk.
    const TErrorCode error = FolderExists(with_.calls, folder)
                                 ? ERROR_SUCCESS
                                 : CreateFoldersBelow(with_.calls, destination_.HostFolder(), folder);
    if (error == ERROR_SUCCESS) {
        knownFolder_ = folder;
        return true;
    }
    if (!DestinationIsGone(source)) {
        if (std::exchange(refusedFolder_, folder) != folder) {
            log_.Problem({.what = TProblemKind::FolderNotMade, .path = folder, .code = error});
        }
        log_.Problem({.what = TProblemKind::CopyFailed, .path = source, .code = error});
        failedFiles_.push_back(source);
    }
    return false;
}

void TCopyRun::CopyOneFile(const std::wstring& source, const std::wstring& folder,
                           const TAttributes& attributes) {
    const std::wstring target = folder + L"\\" + std::wstring(FileNamePart(source));
    const TFileTimes times = attributes.Times();
    const bool isLarge = attributes.Size() >= kProgressThreshold;
    const TCopyResult copied =
        CopyFileSafely(with_.calls, destinationTraits_,
                       {.source = source,
                        .target = target,
                        .size = attributes.Size(),
                        .times = &times,
                        // The current row's switch counts, whichever row the file comes from.
                        .moveAside = with_.memData.Current().History.value_or(false),
                        .progressRoutine = isLarge ? &CopyProgressRoutine : nullptr,
                        .progressData = isLarge ? with_.progressWindow : nullptr});
    if (copied.error != ERROR_SUCCESS) {
        // The folder may be gone: the next file asks again.
        knownFolder_.clear();
        FileFailed(source, copied.error);
        return;
    }
    ++copiedFiles_;
    CopiedBytes += copied.bytes;
    Report(TDM::FormatFileSize(static_cast<double>(CopiedBytes)), TMessagePos::Bytes);
    Report(source, TMessagePos::Memo);
    with_.nasData.RecordCopiedFile(PathDigest(source), localTime_.ToLocal(times.lastWrite));
}

void TCopyRun::FileFailed(const std::wstring& source, TErrorCode error) {
    if (DestinationIsGone(source)) {
        return;
    }
    const TProblem problem{.what = TProblemKind::CopyFailed, .path = source, .code = error};
    log_.Problem(problem);
    failedFiles_.push_back(source);
    if (triedAgain_) {
        // It has its row and its line from the first attempt.
        return;
    }
    Report(source, TMessagePos::Error, ProblemText(problem, &SystemErrorText));
    WriteErrorLine(source);
}

void TCopyRun::WriteErrorLine(const std::wstring& source) {
    const std::wstring log = destination_.ErrorLog();
    const TErrorCode error = WriteErrorLog(with_.calls, log, ErrorLogText(source));
    if (error != ERROR_SUCCESS && !std::exchange(errorLogFailed_, true)) {
        // One row is enough, however many lines cannot be written.
        ReportFailure({.what = TProblemKind::FileNotWritten, .path = log, .code = error});
    }
}

// When the destination itself does not answer any more, each further file would wait out the network. The
// file waits with the others until it does; a drop-out of some seconds is no reason to end a night's run.
bool TCopyRun::DestinationIsGone(const std::wstring& source) {
    // A drive that is no longer connected answers "not found". A refusal is an answer, too.
    const TAttributes folder = QueryAttributes(with_.calls, destination_.HostFolder());
    if (stopped_ || folder.Exists() || folder.error == ERROR_ACCESS_DENIED) {
        return false;
    }
    CopyFileList.push_front(source);
    interruptions_ = source == interruptedAt_ ? interruptions_ + 1 : 1;
    interruptedAt_ = source;
    if (interruptions_ > kInterruptionsOfOneFile) {
        DestinationLost();
        return true;
    }
    Report(WaitingForDestinationText(destination_.nas), TMessagePos::Status);
    cameBack_ = std::make_shared<bool>(false);
    waitTask_ = MakeTask(
        [cameBack = cameBack_, folder = destination_.HostFolder(), &calls = with_.calls](IOmniTask& task) {
            *cameBack = AwaitFolder(calls, folder, kLongestDropOut, task).IsFolder();
        },
        L"AwaitDestination", TTaskPriority::Normal);
    waitTask_->Run();
    return true;
}

// The run is brought to its end; the next one copies what is missing.
void TCopyRun::DestinationLost() {
    isLost_ = true;
    const std::size_t waiting = CopyFileList.size();
    CopyFileList.clear();
    if (FScanTask) {
        FScanTask->Terminate(0);
    }
    ReportFailure(
        {.what = TProblemKind::DestinationLost, .path = destination_.HostFolder(), .number = waiting});
}
