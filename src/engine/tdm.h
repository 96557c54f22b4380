// The data module: the tables, the settings, and the run that is on.
#pragma once

#include <windows.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "engine/copy_run.h"
#include "engine/message_kind.h"
#include "engine/run_state.h"
#include "engine/task_runtime.h"
#include "hashdb/hash_table.h"
#include "hashdb/stored_hash_table.h"
#include "store/settings.h"
#include "store/share_logon.h"
#include "store/source_folder_table.h"
#include "support/platform_calls.h"
#include "ui/timer.h"
#include "ui/wake_up.h"

class TDM;

// A report of the engine; `reason` says why something failed, or is empty. Comes on the window's thread;
// whoever receives it may process window messages.
using TNasMessageEvent =
    std::function<void(TDM& sender, const std::wstring& text, TMessagePos kind, const std::wstring& reason)>;
// A wait of the engine on the window's thread, some ten times a second; as with a report, window messages may
// be processed.
using TNasWaitEvent = std::function<void(TDM& sender)>;
// A run has ended by itself.
using TNasFinishEvent = std::function<void(TDM& sender)>;

// Owns the tables MemData and NasData and the copy run: a scan task finds what must be copied, a timer on the
// window's thread copies it. Everything here is called on the window's thread.
class TDM {
public:
    explicit TDM(const TPlatformCalls& calls);
    TDM(const TDM&) = delete;
    TDM& operator=(const TDM&) = delete;
    ~TDM();

    // Loads the source-folder table. Throws EProblem when "NASConf.Dat" is damaged; nothing is written then,
    // also by DataModuleDestroy.
    void DataModuleCreate();
    // Saves the source-folder table, closes both tables, cancels the share connection.
    void DataModuleDestroy();

    // Writes the source-folder table to "NASConf.Dat" if it changed, or if there is no such file yet; a
    // failure is reported as an Error row.
    void SaveSourceFolderTable();

    // Starts a run and returns at once. What keeps it from beginning is reported: after a destination that
    // cannot be reached CopyIdle stays false until somebody stops the run, one that only checks excepted;
    // settings or a hash table that cannot be read end it with the next tick. Nothing happens while a reindex
    // is under way.
    void StartCopy(const TRunOrder& order = {});
    // Stops the run, or the reindex: nothing more is copied but the file at hand.
    void StopCopy();
    // Waits for the tasks of the run to end, some seconds at most. The windows are painted meanwhile.
    void EndScanTask();
    // Writes the hash table to its file if it has something to say; a failure is reported as an Error row.
    // The windows are painted meanwhile.
    void SaveNasData();
    // Whatever belongs to a run is done now: its log is closed. A run whose last file is still being copied
    // up the stack is closed after it.
    void CloseRun();

    // Appends hash records for an existing backup's files and saves the hash table. Returns when it is done,
    // or soon after it was stopped. Opens no connection to a share: one that asks for other credentials has
    // to be open already.
    void ReIndexNasData();

    // The size text with the user's decimal separator.
    static std::wstring FormatFileSize(double bytes);

    TRunState State() const { return machine_.State(); }
    bool IsAtWork() const { return machine_.IsAtWork(); }
    bool IsReindexing() const { return machine_.IsReindexing(); }
    // Before and after ReIndexNasData: in between no run can begin. False when one is on.
    [[nodiscard]] bool BeginReindex() { return machine_.BeginReindex(); }
    void EndReindex() { machine_.EndReindex(); }
    // Whether a run was ever begun, and what came of the last one.
    bool HasRun() const { return run_ != nullptr; }
    // Whether the current or last run only checks.
    bool OnlyChecks() const { return run_ && !run_->Order().copy; }
    TExitCode ExitCode() const;
    // How much of the current or last run went wrong.
    TRunFailures Failures() const;
    // Where the copy of a source file is, or would be, in the destination of the last run.
    std::wstring PathOfCopy(std::wstring_view source) const;
    // Whether a file is being copied further up the stack: the window must not go away now.
    bool InCopyPass() const { return inPass_; }
    const std::wstring& ConfigurationFolder() const { return configurationFolder_; }
    // Nobody is there: a run waits for its destination instead of giving up at once.
    void SetUnattended(bool unattended) { unattended_ = unattended; }

    // Handlers of the task monitor and of the copy timer.
    void OmniEventMonitorTaskMessage(IOmniTask& task, TTaskMessage& message);
    void OmniEventMonitorTaskTerminated(IOmniTask& task);
    void CopyTimerTimer();

    TNasMessageEvent SetMessage;
    TNasWaitEvent WhileWaiting;
    TNasFinishEvent DoNasFinishMsg;
    HWND myHandle = nullptr;

    TSourceFolderTable MemData;
    THashTable NasData;
    std::wstring NAS;
    bool UseConnect = false;
    // The full path of the hash table's file.
    const std::wstring& VardekoDataFile() const { return nasDataFile_.Path(); }

private:
    void Report(const std::wstring& text, TMessagePos kind, const std::wstring& reason = {});
    void ReportFailure(const TProblem& problem);
    void LoadRunSettings();
    void RunIsPrepared();
    void CopyPass(TCopyRun& run);
    TErrorCode OnTableThread(std::function<TErrorCode()> work);
    TDestination Destination() const { return {.nas = NAS, .host = hostName_}; }
    std::wstring IniFile() const { return configurationFolder_ + L"\\NASConf.ini"; }
    std::wstring SourceFolderFile() const { return configurationFolder_ + L"\\NASConf.Dat"; }

    const TPlatformCalls& calls_;
    std::wstring hostName_;
    std::wstring configurationFolder_;
    bool sourceFoldersLoaded_ = false;
    bool sourceFolderFileMissing_ = false;
    bool unattended_ = false;

    std::shared_ptr<TShareLogon> shareLogon_;
    bool fetchCloudFiles_ = false;
    unsigned parallel_ = 1;
    TSecret AUser;
    TSecret APass;
    DWORD Res = 0;

    TStoredHashTable nasDataFile_{NasData};
    TJobThreads tableThread_{1, {}};
    // What went wrong outside of the run.
    std::uint64_t failures_ = 0;
    TRunMachine machine_;

    TWakeUp taskWakeUp_;
    TOmniEventMonitor OmniEventMonitor;
    // Shared with whatever works for it: each of its reports may let in the start of another run.
    std::shared_ptr<TCopyRun> run_;
    bool inPass_ = false;
    TTimer CopyTimer;
};
