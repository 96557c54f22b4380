#include "engine/tdm.h"

#include "engine/file_size_text.h"
#include "engine/scan_folders.h"
#include "hashdb/hash_table_file.h"
#include "hashdb/reindex.h"
#include "store/source_folder_file.h"
#include "support/path_hash.h"
#include "support/system_error.h"
#include "support/system_helpers.h"
#include "support/text.h"
#include "texts/problem_text.h"

namespace {

constexpr UINT kCopyTimerInterval = 1000;       // milliseconds
constexpr std::uint32_t kLongestWait = 60'000;  // milliseconds

void ApplyThreadPriority(TTaskPriority level) {
    constexpr int kLevels[] = {THREAD_PRIORITY_IDLE,         THREAD_PRIORITY_LOWEST,
                               THREAD_PRIORITY_BELOW_NORMAL, THREAD_PRIORITY_NORMAL,
                               THREAD_PRIORITY_ABOVE_NORMAL, THREAD_PRIORITY_HIGHEST};
    SetThreadPriority(GetCurrentThread(), kLevels[static_cast<std::size_t>(level)]);
}

// Lets windows repaint themselves while the window's thread waits; input stays in the queue.
void PaintWhileWaiting() {
    MSG message{};
    while (PeekMessageW(&message, nullptr, WM_PAINT, WM_PAINT, PM_REMOVE)) {
        if (message.message == WM_QUIT) {
            // Comes whatever is asked for; the message loop needs it.
            PostQuitMessage(static_cast<int>(message.wParam));
            return;
        }
        DispatchMessageW(&message);
    }
}

}  // namespace

TDM::TDM(const TPlatformCalls& calls)
    : calls_(calls),
      shareLogon_(calls),
      taskWakeUp_([this] { OmniEventMonitor.Deliver(); }),
      OmniEventMonitor([this] { taskWakeUp_.Post(); }),
      CopyTimer(kCopyTimerInterval, [this] { CopyTimerTimer(); }) {
    OmniEventMonitor.OnTaskMessage = [this](IOmniTask& task, TTaskMessage& message) {
        OmniEventMonitorTaskMessage(task, message);
    };
    OmniEventMonitor.OnTaskTerminated = [this](IOmniTask& task) { OmniEventMonitorTaskTerminated(task); };
}

// A task that still runs is joined before what it reports to goes.
TDM::~TDM() {
    if (FScanTask) {
        FScanTask->Terminate(0);
        FScanTask.reset();
    }
}

void TDM::DataModuleCreate() {
    hostName_ = HostName();
    configurationFolder_ = ::ConfigurationFolder(calls_);
    CreateHashContext();
    sourceFolderFileMissing_ = !LoadSourceFolders(calls_, SourceFolderFile(), MemData);
    MemData.SetModified(false);
    sourceFoldersLoaded_ = true;
}

void TDM::DataModuleDestroy() {
    CopyFileList.clear();
    SaveSourceFolderTable();
    MemData.Close();
    NasData.Close();
    if (UseConnect) {
        Res = shareLogon_.Cancel();
        if (Res != 0) {
            Report(SystemErrorText(Res), TMessagePos::Memo);
        }
    }
}

void TDM::SaveSourceFolderTable() {
    // Rows that did not change are not written: another copy of the program may have written newer ones, also
    // where there was no file when this one began.
    const bool mustBeMade = sourceFolderFileMissing_ && !FileExists(calls_, SourceFolderFile());
    if (sourceFoldersLoaded_ && (MemData.Modified() || mustBeMade)) {
        if (const TErrorCode error = SaveSourceFolders(calls_, SourceFolderFile(), MemData)) {
            ReportFailure(L"\"" + SourceFolderFile() + L"\" konnte nicht gespeichert werden: " +
                          SystemErrorText(error));
        }
    }
}

void TDM::Report(const std::wstring& text, TMessagePos kind) {
    if (SetMessage) {
        SetMessage(*this, text, kind);
    }
}

void TDM::ReportFailure(const std::wstring& text) {
    ++failures_;
    Report(text, TMessagePos::Error);
}

bool TDM::StartCopy() {
    CopyIdle = false;
    if (FScanTask) {
        // Whoever starts anew without ending the old run has it ended here: its thread is joined when the
        // new task takes its place.
        FScanTask->Terminate(0);
    }
    ++runNumber_;
    CopiedBytes = 0;
    failures_ = 0;
    errorLogFailed_ = false;
    destinationIsGone_ = false;
    knownFolder_.clear();
    CopyFileList.clear();
    localTime_ = TLocalTimeRule();
    nasDataMayBeSaved_ = false;
    try {
        if (!PrepareRun()) {
            return false;
        }
        StartScanTask();
    } catch (const std::exception& error) {
        // Nothing is scanned: the next tick finds the run ended. A task that was made but never ran would
        // keep it alive.
        FScanTask.reset();
        ReportFailure(ProblemText(ProblemOf(error), &SystemErrorText));
    }
    CopyTimer.SetEnabled(true);
    return true;
}

bool TDM::PrepareRun() {
    UseSettings(LoadSettings(calls_, configurationFolder_ + L"\\NASConf.ini"));
    LoadNasData(UseConnect);
    if (UseConnect) {
        Res = shareLogon_.Connect(NAS, AUser, APass);
        if (Res != 0) {
            Report(SystemErrorText(Res), TMessagePos::Memo);
            return false;
        }
    }
    if (!ReachDestination()) {
        return false;
    }
    if (nasDataFileMissing_) {
        // Perhaps it was only out of reach, before the logon or while the destination woke up: its records
        // would be lost at the next save.
        LoadNasData(false);
    }
    nasDataMayBeSaved_ = true;
    return true;
}

void TDM::UseSettings(const TSettings& settings) {
    NAS = settings.DestinationRoot();
    UseConnect = settings.CONNECT.value;
    if (UseConnect) {
        AUser = settings.USER.value.text;
        APass = settings.PASS.value.text;
    }
    VardekoDataFile = HostFolder() + L"\\Vardeko.dat";
}

// A table that cannot be read stays as it is on the destination: nothing will be written over it. As long as
// the destination itself cannot be reached, or the logon is still to come, it counts as missing.
void TDM::LoadNasData(bool beforeLogon) {
    try {
        nasDataFileMissing_ = !LoadHashTable(calls_, VardekoDataFile, NasData);
    } catch (const std::exception&) {
        if (!beforeLogon && FolderExists(calls_, NAS + L"\\")) {
            throw;
        }
        nasDataFileMissing_ = true;
    }
    if (!NasData.HasIndex()) {
        NasData.AddIndex();
    }
    NasData.Open();
}

bool TDM::ReachDestination() {
    // Without a destination the path below would name the current drive's root.
    if (NAS.empty() || !FolderExists(calls_, NAS + L"\\")) {
        Report(L"Error: Destination Directory does not exist, " + NAS, TMessagePos::Memo);
        return false;
    }
    if (!FolderExists(calls_, HostFolder()) && !CreateFolders(calls_, HostFolder())) {
        Report(L"Error: Can not create Subdirectory, " + HostFolder(), TMessagePos::Memo);
        return false;
    }
    return true;
}

void TDM::StartScanTask() {
    FScanTask =
        std::make_unique<IOmniTaskControl>([this](IOmniTask& task) { ScanFolders(task); }, L"ScanFolders");
    FScanTask->MonitorWith(OmniEventMonitor);
    FScanTask->SetParameter(L"DataSet", std::shared_ptr<const std::vector<SourceFolderRow>>(
                                            std::make_shared<std::vector<SourceFolderRow>>(MemData.Rows())));
    FScanTask->SetParameter(L"NasData", NasData.Snapshot());
    FScanTask->SetParameter(L"NAS", NAS);
    FScanTask->SetParameter(L"HOST", hostName_);
    FScanTask->SetPriority(TTaskPriority::Highest, &ApplyThreadPriority);
    FScanTask->Run();
}

// Runs on the task's thread: beside its parameters it uses the table of platform calls, which never changes.
void TDM::ScanFolders(IOmniTask& task) const {
    TFolderScan scan(task, calls_,
                     {task.Parameter<std::shared_ptr<const std::vector<SourceFolderRow>>>(L"DataSet"),
                      task.Parameter<std::shared_ptr<const THashSnapshot>>(L"NasData"),
                      task.Parameter<std::wstring>(L"NAS"), task.Parameter<std::wstring>(L"HOST")});
    scan.Run();
}

void TDM::EndScanTask() {
    if (!FScanTask) {
        return;
    }
    const std::unique_ptr<IOmniTaskControl> task = std::move(FScanTask);
    task->Terminate(kUnlimitedWait, &PaintWhileWaiting);
    task->WaitFor(kLongestWait, &PaintWhileWaiting);
    // What the task still sent belongs to this run, not to the next one.
    OmniEventMonitor.Deliver();
}

void TDM::SaveNasData() {
    if (!nasDataMayBeSaved_ || !NasData.IsOpen() || !(NasData.Modified() || nasDataFileMissing_)) {
        return;
    }
    if (const TErrorCode error = SaveHashTable(calls_, VardekoDataFile, NasData)) {
        ReportFailure(L"\"" + VardekoDataFile + L"\" konnte nicht gespeichert werden: " +
                      SystemErrorText(error));
        return;
    }
    nasDataFileMissing_ = false;
}

void TDM::ReIndexNasData() {
    try {
        UseSettings(LoadSettings(calls_, configurationFolder_ + L"\\NASConf.ini"));
    } catch (const std::exception& error) {
        return ReportFailure(ProblemText(ProblemOf(error), &SystemErrorText));
    }
    if (NAS.empty() || !FolderExists(calls_, HostFolder())) {
        return Report(L"Error: Destination Directory does not exist, " + NAS, TMessagePos::Memo);
    }
    NasData.ClearIndex();
    NasData.Open();
    // From here on what was made may be saved at any time, also when the session ends in the middle.
    nasDataMayBeSaved_ = true;
    NasData.SetModified(true);
    try {
        ReindexSourceFolders(
            calls_, MemData, NasData, NAS, hostName_,
            {.folderFound = [this](const std::wstring& folder) { Report(folder, TMessagePos::Status); },
             .folderBegun = [this](const std::wstring& folder) { Report(folder, TMessagePos::Memo); },
             .fileIndexed = [this](const std::wstring& name) { Report(name, TMessagePos::FileMsg); },
             .stopRequested = [] { return CopyIdle; }});
    } catch (const std::exception& error) {
        ReportFailure(ProblemText(ProblemOf(error), &SystemErrorText));
    }
    SaveNasData();
}

std::wstring TDM::FormatFileSize(double bytes) {
    wchar_t separator[8] = L",";
    GetLocaleInfoEx(LOCALE_NAME_USER_DEFAULT, LOCALE_SDECIMAL, separator,
                    static_cast<int>(std::size(separator)));
    return FileSizeText(bytes, separator);
}

void TDM::OmniEventMonitorTaskMessage(IOmniTask&, TTaskMessage& message) {
    const auto identifier = static_cast<TScanMessage>(message.identifier);
    if (const auto* text = std::get_if<std::wstring>(&message.value)) {
        switch (identifier) {
            case TScanMessage::StatusText:
                return Report(*text, TMessagePos::Status);
            case TScanMessage::MemoText:
                return Report(*text, TMessagePos::Memo);
            case TScanMessage::IgnoreText:
                return Report(*text, TMessagePos::Ignore);
            default:
                return;
        }
    }
    if (const auto* problem = std::get_if<TProblem>(&message.value)) {
        return ReportFailure(ProblemText(*problem, &SystemErrorText));
    }
    if (const auto* number = std::get_if<std::int64_t>(&message.value);
        number != nullptr && identifier == TScanMessage::Number) {
        return Report(std::to_wstring(*number), TMessagePos::ThreadMsg);
    }
    auto* files = std::get_if<std::unique_ptr<TStringList>>(&message.value);
    if (files != nullptr && identifier == TScanMessage::FilesToCopy && !destinationIsGone_) {
        CopyFileList.insert(CopyFileList.end(), std::make_move_iterator((*files)->begin()),
                            std::make_move_iterator((*files)->end()));
    }
}

void TDM::OmniEventMonitorTaskTerminated(IOmniTask& task) {
    if (FScanTask && FScanTask->Task().get() == &task) {
        FScanTask.reset();
    }
}
