// What the program is at, which step may follow which, and what came of the last run.
#pragma once

#include <cstdint>

enum class TRunState {
    Idle,             // nothing is under way
    Preparing,        // a run looks for its destination and loads its table
    Running,          // a run scans and copies
    Unreachable,      // a run could not begin: it waits for its user to stop it
    Stopping,         // a run was stopped; the file at hand is still being finished up the stack
    Ended,            // a run is over, one way or the other
    Reindexing,       // the hash table is being rebuilt
    StoppingReindex,  // that was stopped, and is still up the stack
};

enum class TRunOutcome {
    None,      // no run was begun, or it has not come to an end
    Finished,  // it came to its end by itself
    Stopped,   // by the user, by a mistake or by the end of the session
};

// What the exit code of the program says, besides 2 of a program that could not start.
enum class TExitCode {
    AllCopied = 0,
    NotAllCopied = 1,         // something failed, or the run did not come to its end
    SourceFolderMissing = 3,  // all that was found is copied, but a source folder of an active row was not
    BadCopies = 4,            // a check found copies that are bad, whatever else there is to say
};

// `failures` counts what went wrong, `missingFolders` the source folders that do not exist, `badCopies` what
// a check found, also when it was made anew.
TExitCode ExitCodeOf(TRunOutcome outcome, std::uint64_t failures, std::uint64_t missingFolders,
                     std::uint64_t badCopies);

// The states and the legal steps between them. A step that is not legal changes nothing and answers false: a
// click, the end of the session or the end of a task may come at any moment. One at a time exists in the
// program; it belongs to the window's thread.
class TRunMachine {
public:
    TRunMachine() { MoveTo(TRunState::Idle); }
    TRunMachine(const TRunMachine&) = delete;
    TRunMachine& operator=(const TRunMachine&) = delete;
    ~TRunMachine() { MoveTo(TRunState::Idle); }

    TRunState State() const { return state_; }
    // Of the last run.
    TRunOutcome Outcome() const { return outcome_; }
    // Whether the computer must not fall asleep now.
    bool IsAtWork() const;
    bool IsReindexing() const {
        return state_ == TRunState::Reindexing || state_ == TRunState::StoppingReindex;
    }

    // A run begins: from Idle or Ended, and from Stopping, when the user does not wait for the last file.
    bool Start();
    // Its destination is there, or is not.
    bool Prepared();
    bool NotReached();
    // It has nothing left to do.
    bool Finish();
    // Stopped; `fileAtHand`: a file is being copied up the stack, and FileDone follows.
    bool Stop(bool fileAtHand);
    bool FileDone();

    bool BeginReindex();
    bool EndReindex();

    // See CopyIdle.
    static const bool& Idle() { return idle_; }

private:
    bool MoveTo(TRunState state);

    static inline bool idle_ = true;
    TRunState state_ = TRunState::Idle;
    TRunOutcome outcome_ = TRunOutcome::None;
};

// False while a copy run or a reindex is active; true when idle, or when a stop is asked for. Belongs to the
// window's thread; only the machine writes it.
inline const bool& CopyIdle = TRunMachine::Idle();
