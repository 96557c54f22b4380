// The data module: the tables, the settings and the copy run.
#pragma once

#include <windows.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>

#include "config/source_folder_table.h"
#include "engine/message_kind.h"
#include "engine/task_runtime.h"
#include "hashdb/hash_table.h"
#include "support/platform_calls.h"
#include "ui/timer.h"
#include "ui/wake_up.h"

class TDM;

// A report of the engine. Comes on the window's thread; whoever receives it may process window messages.
using TNasMessageEvent = std::function<void(TDM& sender, const std::wstring& text, TMessagePos kind)>;
// A run has ended by itself.
using TNasFinishEvent = std::function<void(TDM& sender)>;

// Owns the tables MemData and NasData and drives a copy run: a scan task finds what must be copied, a timer
// on the window's thread copies it.
class TDM {
public:
    explicit TDM(const TPlatformCalls& calls);
    TDM(const TDM&) = delete;
    TDM& operator=(const TDM&) = delete;
    ~TDM();

    // Loads the source-folder table. Throws std::runtime_error (UTF-8, German, names the file) when
    // "NASConf.Dat" is damaged; nothing is written then, also by DataModuleDestroy.
    void DataModuleCreate();
    // Saves the source-folder table, closes both tables, cancels the share connection.
    void DataModuleDestroy();

    // Starts a run and returns before anything is copied. When the run cannot be started it has been
    // reported and CopyIdle stays false until somebody stops the run.
    void StartCopy();
    // Ends the scan task: asks it to stop, waits for it, forgets it.
    void EndScanTask();
    // Writes the hash table to VardekoDataFile if that is due; a failure is reported as one Error row.
    void SaveNasData();

    // How many files of the current or last run could not be copied.
    std::uint64_t FailedFiles() const { return failedFiles_; }
    // Whether a file is being copied further up the stack: the window must not go away now.
    bool InCopyPass() const { return inPass_; }

    TNasMessageEvent SetMessage;
    TNasFinishEvent DoNasFinishMsg;
    HWND myHandle = nullptr;

    TSourceFolderTable MemData;
    THashTable NasData;
    std::wstring NAS;
    std::wstring VardekoDataFile;

private:
    std::uint64_t failedFiles_ = 0;
    bool inPass_ = false;
};
