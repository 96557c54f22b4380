// The half of a copy run that copies: the timer's pass over the waiting files.
#include "engine/copy_progress.h"
#include "engine/error_log.h"
#include "engine/safe_copy.h"
#include "engine/tdm.h"
#include "hashdb/destination_folder.h"
#include "support/path_hash.h"
#include "support/path_text.h"
#include "support/system_error.h"
#include "support/system_helpers.h"

namespace {

// Smaller files are copied without telling their progress.
constexpr std::int64_t kProgressThreshold = 64 * 1024 * 1024;

}  // namespace

void TDM::CopyTimerTimer() {
    if (inPass_) {
        // A report of the pass further up the stack processes messages, and a new run was started there. The
        // timer stays on for it.
        return;
    }
    CopyTimer.SetEnabled(false);
    // Catches what a wake-up that the system refused has left lying.
    OmniEventMonitor.Deliver();
    if (CopyIdle) {
        return;
    }
    const std::uint64_t run = runNumber_;
    CopyFiles();
    if (run != runNumber_) {
        return;
    }
    if (CopyIdle) {
        // Stopped in mid-file: what was recorded after the stop saved the table is saved now.
        SaveNasData();
    } else if (FScanTask || !CopyFileList.empty()) {
        // The last report may have brought in files, and with them the end of the task.
        CopyTimer.SetEnabled(true);
    } else if (DoNasFinishMsg) {
        DoNasFinishMsg(*this);
    }
}

void TDM::CopyFiles() {
    const std::uint64_t run = runNumber_;
    inPass_ = true;
    try {
        while (!CopyFileList.empty() && !CopyIdle && run == runNumber_) {
            CopyNextFile();
        }
    } catch (...) {
        inPass_ = false;
        throw;
    }
    inPass_ = false;
    if (FScanTask && run == runNumber_) {
        Report(L"Suche nach veränderten Daten..", TMessagePos::Status);
    }
}

void TDM::CopyNextFile() {
    const std::wstring source = std::move(CopyFileList.front());
    CopyFileList.pop_front();
    // The only question about the source: existence, size and times together.
    const TAttributes attributes = QueryAttributes(calls_, source);
    if (attributes.IsFolder() || IsMissing(attributes.error)) {
        // Gone since the scan saw it.
        return;
    }
    Report(source, TMessagePos::Status);
    if (!attributes.Exists()) {
        // Out of reach is not gone: a file that stays without its copy must be told.
        ReportFailedCopy(source);
        Report(std::wstring(FileNamePart(source)), TMessagePos::FileMsg);
        return;
    }
    const std::wstring folder(RemoveTrailingSeparator(DestinationFolder(NAS, hostName_, source)));
    if (folder != knownFolder_) {
        if (!FolderExists(calls_, folder) && !CreateFolders(calls_, folder)) {
            ++failures_;
            GiveUpIfDestinationIsGone();
            return;
        }
        knownFolder_ = folder;
    }
    CopyOneFile(source, folder, attributes);
    Report(std::wstring(FileNamePart(source)), TMessagePos::FileMsg);
}

void TDM::CopyOneFile(const std::wstring& source, const std::wstring& folder, const TAttributes& attributes) {
    const std::wstring target = folder + L"\\" + std::wstring(FileNamePart(source));
    // The current row's switch counts, whichever row the file comes from. A copy that cannot be moved aside
    // is not written over either.
    if (MemData.Current().History.value_or(false) && !MoveAsideWithNumber(calls_, target)) {
        ReportFailedCopy(source);
        return;
    }
    const std::int64_t size = attributes.Size();
    const TFileTimes times = attributes.Times();
    const bool isLarge = size >= kProgressThreshold;
    const TErrorCode error =
        CopyFileSafely(calls_, {.source = source,
                                .target = target,
                                .times = &times,
                                .progressRoutine = isLarge ? &CopyProgressRoutine : nullptr,
                                .progressData = isLarge ? myHandle : nullptr});
    if (error != ERROR_SUCCESS) {
        // The folder may be gone: the next file asks again.
        knownFolder_.clear();
        ReportFailedCopy(source);
        return;
    }
    CopiedBytes += size;
    Report(FormatFileSize(static_cast<double>(CopiedBytes)), TMessagePos::Bytes);
    Report(source, TMessagePos::Memo);
    NasData.RecordCopiedFile(PathDigest(source), localTime_.ToLocal(times.lastWrite));
}

void TDM::ReportFailedCopy(const std::wstring& source) {
    ReportFailure(source);
    if (GiveUpIfDestinationIsGone()) {
        return;
    }
    const std::wstring log = HostFolder() + L"\\Error.log";
    const TErrorCode error = WriteErrorLog(calls_, log, source + L" Copy Error");
    if (error != ERROR_SUCCESS && !errorLogFailed_) {
        // One row is enough, however many lines cannot be written.
        errorLogFailed_ = true;
        ReportFailure(L"\"" + log + L"\" konnte nicht geschrieben werden: " + SystemErrorText(error));
    }
}

// When the destination itself does not answer any more, each further file would wait out the network. The run
// is brought to its end instead; the next one copies what is missing.
bool TDM::GiveUpIfDestinationIsGone() {
    if (destinationIsGone_) {
        return true;
    }
    // A drive that is no longer connected answers "not found".
    const TErrorCode error = QueryAttributes(calls_, HostFolder()).error;
    if (!IsOutOfReach(error) && !IsMissing(error)) {
        return false;
    }
    destinationIsGone_ = true;
    const std::size_t waiting = CopyFileList.size();
    CopyFileList.clear();
    if (FScanTask) {
        FScanTask->Terminate(0);
    }
    ReportFailure(L"Das Ziel ist nicht mehr erreichbar: " + HostFolder() + L" (noch " +
                  std::to_wstring(waiting) + L" Dateien zu kopieren)");
    return true;
}
