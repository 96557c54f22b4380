// What comes before a run's scan: the logon, the destination, its table.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/task_runtime.h"
#include "hashdb/hash_table.h"
#include "store/settings.h"
#include "store/share_logon.h"
#include "support/file_access.h"
#include "support/platform_calls.h"
#include "support/problem.h"

// Where a run goes, and how it gets there.
struct TDestination {
    std::wstring nas;  // destination root, without a trailing "\"
    std::wstring host;

    // This computer's folder below the root: its copies, its table and its error log.
    std::wstring HostFolder() const { return nas + L"\\" + host; }
    std::wstring TableFile() const { return HostFolder() + L"\\Vardeko.dat"; }
    std::wstring ErrorLog() const { return HostFolder() + L"\\Error.log"; }
};

struct TPreparationOrder {
    TDestination destination;
    std::wstring configurationFolder;
    std::shared_ptr<TShareLogon> logon;  // none: without another user
    TSecret user;
    TSecret password;
    bool unattended = false;  // a destination that is not there yet is waited for
    bool onlyReads = false;   // nothing is made, or moved, at the destination
    bool makesFolder = true;  // this computer's, where it is missing
};

// Keeps a second run from working on the same table at the same time: for as long as the object lives, others
// find the destination taken.
class TDestinationClaim {
public:
    // Nothing when another program, or another run of this one, holds it.
    static std::unique_ptr<TDestinationClaim> Take(const TDestination& destination);

    explicit TDestinationClaim(HANDLE mutex) : mutex_(mutex) {}
    TDestinationClaim(const TDestinationClaim&) = delete;
    TDestinationClaim& operator=(const TDestinationClaim&) = delete;
    ~TDestinationClaim() { CloseHandle(mutex_); }

private:
    HANDLE mutex_;
};

// What came of it.
struct TPreparation {
    // Why the run cannot begin: the destination is not to be had.
    std::optional<TProblem> notReached;
    // Why it ends before it begins: its table cannot be read, and nothing may be written over it; or there is
    // no backup that could be read.
    std::optional<TProblem> broken;
    // What the user must hear all the same.
    std::vector<TProblem> told;
    // The table; none when there is no such file.
    std::unique_ptr<THashTable> table;
    std::unique_ptr<TDestinationClaim> claim;
};

// Logs on, waits for the destination, makes this computer's folder there and loads the table. Runs on a
// task's thread, because a NAS that sleeps holds up each of these calls; ends early when the task is asked to
// stop.
TPreparation PrepareRun(const TPlatformCalls& calls, TPreparationOrder& order, IOmniTask& task);
