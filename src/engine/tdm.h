// The data module: the tables, the settings and the copy run.
#pragma once

#include <windows.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>

#include "engine/message_kind.h"
#include "engine/task_runtime.h"
#include "hashdb/hash_table.h"
#include "store/settings.h"
#include "store/share_logon.h"
#include "store/source_folder_table.h"
#include "support/file_times.h"
#include "support/platform_calls.h"
#include "ui/timer.h"
#include "ui/wake_up.h"

class TDM;

// A report of the engine. Comes on the window's thread; whoever receives it may process window messages.
using TNasMessageEvent = std::function<void(TDM& sender, const std::wstring& text, TMessagePos kind)>;
// A run has ended by itself.
using TNasFinishEvent = std::function<void(TDM& sender)>;

// Owns the tables MemData and NasData and drives a copy run: a scan task finds what must be copied, a timer
// on the window's thread copies it. Everything here is called on the window's thread.
class TDM {
public:
    explicit TDM(const TPlatformCalls& calls);
    TDM(const TDM&) = delete;
    TDM& operator=(const TDM&) = delete;
    ~TDM();

    // Loads the source-folder table. Throws EProblem when "NASConf.Dat" cannot be read; nothing is written
    // then, also by DataModuleDestroy.
    void DataModuleCreate();
    // Saves the source-folder table, closes both tables, cancels the share connection.
    void DataModuleDestroy();

    // Writes the source-folder table to "NASConf.Dat" if it changed, or if there is no such file yet; a
    // failure is reported as an Error row.
    void SaveSourceFolderTable();

    // Starts a run and returns before anything is copied. A destination that cannot be reached is reported
    // and CopyIdle stays false until somebody stops the run: false then, as nothing is under way. Settings or
    // a hash table that cannot be read are reported as an error, and the run ends with the next tick.
    bool StartCopy();
    // Ends the scan task: asks it to stop, waits for it, forgets it. The windows are painted meanwhile.
    void EndScanTask();
    // Appends hash records for an existing backup's files and saves the hash table. Returns when it is done,
    // or soon after CopyIdle was set.
    void ReIndexNasData();
    // Writes the hash table to VardekoDataFile if it has something to say; a failure is reported as one
    // Error row.
    void SaveNasData();

    // The size text with the user's decimal separator.
    static std::wstring FormatFileSize(double bytes);

    // How much of the current or last run went wrong: files not copied, folders not read, tables not saved.
    std::uint64_t Failures() const { return failures_; }
    // Whether a file is being copied further up the stack: the window must not go away now.
    bool InCopyPass() const { return inPass_; }
    const std::wstring& ConfigurationFolder() const { return configurationFolder_; }

    // Handlers of the task monitor and of the copy timer.
    void OmniEventMonitorTaskMessage(IOmniTask& task, TTaskMessage& message);
    void OmniEventMonitorTaskTerminated(IOmniTask& task);
    void CopyTimerTimer();

    TNasMessageEvent SetMessage;
    TNasFinishEvent DoNasFinishMsg;
    HWND myHandle = nullptr;

    TSourceFolderTable MemData;
    THashTable NasData;
    std::wstring NAS;
    std::wstring VardekoDataFile;
    bool UseConnect = false;

private:
    void Report(const std::wstring& text, TMessagePos kind);
    void ReportFailure(const std::wstring& text);
    // Settings, hash table, share and destination. False when the destination cannot be reached, which has
    // been reported; throws when settings or hash table cannot be read.
    bool PrepareRun();
    void UseSettings(const TSettings& settings);
    void LoadNasData(bool beforeLogon);
    bool ReachDestination();
    void StartScanTask();
    void ScanFolders(IOmniTask& task) const;

    void CopyFiles();
    void CopyNextFile();
    void CopyOneFile(const std::wstring& source, const std::wstring& folder, const TAttributes& attributes);
    void ReportFailedCopy(const std::wstring& source);
    bool GiveUpIfDestinationIsGone();
    std::wstring HostFolder() const { return NAS + L"\\" + hostName_; }
    std::wstring SourceFolderFile() const { return configurationFolder_ + L"\\NASConf.Dat"; }

    const TPlatformCalls& calls_;
    std::wstring hostName_;
    std::wstring configurationFolder_;
    bool sourceFoldersLoaded_ = false;
    bool sourceFolderFileMissing_ = false;

    TShareLogon shareLogon_;
    std::wstring AUser;
    std::wstring APass;
    DWORD Res = 0;

    std::deque<std::wstring> CopyFileList;
    std::int64_t CopiedBytes = 0;
    std::uint64_t failures_ = 0;
    // Counts the starts: a pass that notices a newer run further down the stack leaves everything to it.
    std::uint64_t runNumber_ = 0;
    bool inPass_ = false;
    // The destination folder that the last file went to, known to exist.
    std::wstring knownFolder_;
    TLocalTimeRule localTime_;
    bool errorLogFailed_ = false;
    bool destinationIsGone_ = false;

    // Whether NasData belongs to VardekoDataFile and may be written there; and whether that file is missing.
    bool nasDataMayBeSaved_ = false;
    bool nasDataFileMissing_ = false;

    TWakeUp taskWakeUp_;
    TOmniEventMonitor OmniEventMonitor;
    std::unique_ptr<IOmniTaskControl> FScanTask;
    TTimer CopyTimer;
};
