#include "engine/run_preparation.h"

#include "engine/destination_wait.h"
#include "engine/scan_folders.h"
#include "hashdb/hash_table_file.h"
#include "store/seen_tables.h"
#include "support/case_folding.h"
#include "support/file_access.h"
#include "support/path_hash.h"
#include "support/system_helpers.h"
#include "texts/problem_text.h"
#include "texts/run_texts.h"

namespace {

constexpr ULONGLONG kWaitForStart = 120'000;  // milliseconds: a NAS that spins up, a Wi-Fi that connects

void Tell(IOmniTask& task, std::wstring text) {
    task.Send(static_cast<std::uint16_t>(TScanMessage::StatusText), std::move(text));
}

// One attempt: the logon, then the root. ERROR_SUCCESS when the destination is there.
struct TAttempt {
    TErrorCode logonError = ERROR_SUCCESS;
    TErrorCode rootError = ERROR_SUCCESS;

    bool Reached() const { return logonError == ERROR_SUCCESS && rootError == ERROR_SUCCESS; }
};

TAttempt Attempt(const TPlatformCalls& calls, const TPreparationOrder& order) {
    TAttempt attempt;
    if (order.logon != nullptr) {
        // Copies, because the logon wipes what it is given.
        std::wstring user = order.user.text;
        std::wstring password = order.password.text;
        attempt.logonError = order.logon->Connect(order.destination.nas, user, password);
        if (attempt.logonError != ERROR_SUCCESS) {
            return attempt;
        }
    }
    const TAttributes root = QueryAttributes(calls, order.destination.nas + L"\\");
    attempt.rootError = root.Exists() && !root.IsFolder() ? ERROR_DIRECTORY : root.error;
    return attempt;
}

// A refused logon is answered at once: another attempt could lock the account.
bool IsWorthWaiting(const TAttempt& attempt) {
    return attempt.logonError == ERROR_SUCCESS || IsOutOfReach(attempt.logonError);
}

std::optional<TProblem> ReachRoot(const TPlatformCalls& calls, const TPreparationOrder& order,
                                  IOmniTask& task) {
    const std::wstring& nas = order.destination.nas;
    // Without a destination the paths would name the current drive's root.
    if (nas.empty()) {
        return TProblem{.what = TProblemKind::DestinationMissing};
    }
    // A NAS that sleeps may take half a minute for its first answer.
    Tell(task, WaitingForDestinationText(nas));
    const ULONGLONG begun = calls.GetTickCount64();
    TAttempt attempt = Attempt(calls, order);
    while (!attempt.Reached() && order.unattended && IsWorthWaiting(attempt) && !task.Terminated() &&
           calls.GetTickCount64() - begun < kWaitForStart) {
        Pause(calls, kAskAgainAfter, task);
        attempt = Attempt(calls, order);
    }
    if (attempt.logonError != ERROR_SUCCESS) {
        return TProblem{.what = TProblemKind::ShareRefused, .path = nas, .code = attempt.logonError};
    }
    if (attempt.rootError != ERROR_SUCCESS) {
        return TProblem{.what = TProblemKind::DestinationMissing, .path = nas, .code = attempt.rootError};
    }
    return std::nullopt;
}

std::optional<TProblem> ReachHostFolder(const TPlatformCalls& calls, const TDestination& destination) {
    const std::wstring folder = destination.HostFolder();
    if (FolderExists(calls, folder)) {
        return std::nullopt;
    }
    const TErrorCode error = CreateFoldersBelow(calls, destination.nas, folder);
    return error == ERROR_SUCCESS
               ? std::nullopt
               : std::optional(
                     TProblem{.what = TProblemKind::HostFolderNotMade, .path = folder, .code = error});
}

// Whoever runs already may take hours; nobody is to wait longer than for him.
std::unique_ptr<TDestinationClaim> AwaitClaim(const TPlatformCalls& calls, const TDestination& destination,
                                              IOmniTask& task) {
    auto claim = TDestinationClaim::Take(destination);
    while (!claim && !task.Terminated()) {
        Tell(task, WaitingForOtherRunText(destination.nas));
        Pause(calls, kAskAgainAfter, task);
        claim = TDestinationClaim::Take(destination);
    }
    return claim;
}

bool IsDamage(const TProblem& problem) {
    return problem.what == TProblemKind::TableDamaged || problem.what == TProblemKind::NoTableFile;
}

void LoadTable(const TPlatformCalls& calls, const TPreparationOrder& order, TPreparation& preparation) {
    const TDestination& destination = order.destination;
    auto table = std::make_unique<THashTable>();
    try {
        // A missing one is asked for twice: its records would be lost if it was only out of reach for a
        // moment.
        if (LoadHashTable(calls, destination.TableFile(), *table) ||
            LoadHashTable(calls, destination.TableFile(), *table)) {
            preparation.table = std::move(table);
            return;
        }
        const std::uint64_t records =
            order.onlyReads ? 0 : TakeSeenRecords(calls, order.configurationFolder, destination.TableFile());
        if (records != 0) {
            preparation.told.push_back(
                {.what = TProblemKind::TableLost, .path = destination.TableFile(), .number = records});
        }
    } catch (const std::exception& error) {
        TProblem problem = ProblemOf(error);
        // A damaged table would stop every later run as well. Without it the copies' own dates decide, as
        // they do for a run that only reads. One of another version may be worth more than this program
        // knows.
        const bool goesOn =
            order.onlyReads || (IsDamage(problem) && MoveAsideWithNumber(calls, destination.TableFile()));
        if (goesOn) {
            preparation.told.push_back(std::move(problem));
        } else {
            preparation.broken = std::move(problem);
        }
    }
}

}  // namespace

std::unique_ptr<TDestinationClaim> TDestinationClaim::Take(const TDestination& destination) {
    // The name is the same for all users; whoever may not open it knows that it exists.
    const std::wstring name = L"Global\\Vardeko-" + PathHash(FoldedCase(destination.HostFolder()));
    const HANDLE mutex = CreateMutexW(nullptr, FALSE, name.c_str());
    const DWORD error = GetLastError();
    if (mutex != nullptr && error != ERROR_ALREADY_EXISTS) {
        return std::make_unique<TDestinationClaim>(mutex);
    }
    if (mutex != nullptr) {
        CloseHandle(mutex);
    }
    return nullptr;
}

TPreparation PrepareRun(const TPlatformCalls& calls, TPreparationOrder& order, IOmniTask& task) {
    TPreparation preparation;
    preparation.notReached = ReachRoot(calls, order, task);
    order.user = {};
    order.password = {};
    if (!preparation.notReached && !task.Terminated()) {
        if (order.makesFolder) {
            preparation.notReached = ReachHostFolder(calls, order.destination);
        } else if (!FolderExists(calls, order.destination.HostFolder())) {
            preparation.broken =
                TProblem{.what = TProblemKind::NothingToCheck, .path = order.destination.HostFolder()};
            return preparation;
        }
    }
    if (!preparation.notReached && !task.Terminated()) {
        preparation.claim = AwaitClaim(calls, order.destination, task);
    }
    if (preparation.claim && !task.Terminated()) {
        LoadTable(calls, order, preparation);
    }
    return preparation;
}
