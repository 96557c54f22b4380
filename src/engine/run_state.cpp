#include "engine/run_state.h"

TExitCode ExitCodeOf(TRunOutcome outcome, std::uint64_t failures, std::uint64_t missingFolders,
                     std::uint64_t badCopies) {
    if (badCopies != 0) {
        return TExitCode::BadCopies;
    }
    if (outcome != TRunOutcome::Finished || failures != 0) {
        return TExitCode::NotAllCopied;
    }
    return missingFolders != 0 ? TExitCode::SourceFolderMissing : TExitCode::AllCopied;
}

bool TRunMachine::IsAtWork() const {
    return state_ == TRunState::Preparing || state_ == TRunState::Running || IsReindexing();
}

bool TRunMachine::MoveTo(TRunState state) {
    state_ = state;
    idle_ = state == TRunState::Idle || state == TRunState::Ended || state == TRunState::Stopping ||
            state == TRunState::StoppingReindex;
    return true;
}

bool TRunMachine::Start() {
    if (!idle_ || state_ == TRunState::StoppingReindex) {
        return false;
    }
    outcome_ = TRunOutcome::None;
    return MoveTo(TRunState::Preparing);
}

bool TRunMachine::Prepared() {
    return state_ == TRunState::Preparing && MoveTo(TRunState::Running);
}

bool TRunMachine::NotReached() {
    return state_ == TRunState::Preparing && MoveTo(TRunState::Unreachable);
}

bool TRunMachine::Finish() {
    if (state_ != TRunState::Running) {
        return false;
    }
    outcome_ = TRunOutcome::Finished;
    return MoveTo(TRunState::Ended);
}

bool TRunMachine::Stop(bool fileAtHand) {
    if (state_ == TRunState::Reindexing) {
        return MoveTo(TRunState::StoppingReindex);
    }
    if (idle_) {
        return false;
    }
    outcome_ = TRunOutcome::Stopped;
    return MoveTo(fileAtHand ? TRunState::Stopping : TRunState::Ended);
}

bool TRunMachine::FileDone() {
    return state_ == TRunState::Stopping && MoveTo(TRunState::Ended);
}

bool TRunMachine::BeginReindex() {
    return (state_ == TRunState::Idle || state_ == TRunState::Ended) && MoveTo(TRunState::Reindexing);
}

bool TRunMachine::EndReindex() {
    return IsReindexing() && MoveTo(TRunState::Idle);
}
