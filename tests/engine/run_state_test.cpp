#include "engine/run_state.h"

#include <gtest/gtest.h>

#include <functional>
#include <iterator>
#include <string>
#include <vector>

namespace {

// A run as the engine drives the machine: one that copies has a pass on the stack, from within whose reports
// users and system do what they like.
struct TWorld {
    TRunMachine machine;
    bool isInPass = false;
    bool reindexOnStack = false;
    int started = 0;
    int finished = 0;
    int stopped = 0;
    bool stopAfterStart = false;

    void Start() {
        // As TDM.StartCopy: an old run is stopped first.
        Stop();
        if (machine.Start()) {
            ++started;
            stopAfterStart = false;
        }
    }
    void Stop() {
        const bool wasReindex = machine.IsReindexing();
        if (machine.Stop(isInPass) && !wasReindex) {
            ++stopped;
            stopAfterStart = true;
        }
    }
    void Finish() {
        if (machine.Finish()) {
            ++finished;
            EXPECT_FALSE(stopAfterStart) << "a run that was stopped must not end as a good one";
        }
    }
    void BeginPass() { isInPass = isInPass || machine.State() == TRunState::Running; }
    void EndPass() {
        if (isInPass) {
            isInPass = false;
            machine.FileDone();
        }
    }
    void BeginReindex() { reindexOnStack = machine.BeginReindex() || reindexOnStack; }
    void EndReindex() {
        if (reindexOnStack) {
            reindexOnStack = false;
            EXPECT_TRUE(machine.EndReindex());
        }
    }
};

using TStep = void (*)(TWorld&);
struct TNamedStep {
    const char* name;
    TStep step;
};

// What a user, a task or the system can make happen at any moment.
const TNamedStep kSteps[] = {
    {"start", [](TWorld& world) { world.Start(); }},
    {"stop, close or end of session", [](TWorld& world) { world.Stop(); }},
    {"prepared", [](TWorld& world) { world.machine.Prepared(); }},
    {"not reached", [](TWorld& world) { world.machine.NotReached(); }},
    {"nothing left to do", [](TWorld& world) { world.Finish(); }},
    {"pass begins", [](TWorld& world) { world.BeginPass(); }},
    {"pass ends", [](TWorld& world) { world.EndPass(); }},
    {"reindex begins", [](TWorld& world) { world.BeginReindex(); }},
    {"reindex ends", [](TWorld& world) { world.EndReindex(); }},
};

void ExpectSound(const TWorld& world, const std::string& way) {
    const TRunMachine& machine = world.machine;
    EXPECT_EQ(machine.IsReindexing(), world.reindexOnStack) << way;
    EXPECT_LE(world.finished + world.stopped, world.started) << way << ": a run ended twice";
    const bool busy = !CopyIdle;
    EXPECT_EQ(busy, machine.IsAtWork() ? machine.State() != TRunState::StoppingReindex
                                       : machine.State() == TRunState::Unreachable)
        << way;
    if (busy && !world.reindexOnStack) {
        EXPECT_EQ(machine.Outcome(), TRunOutcome::None) << way;
    }
    const TExitCode code = ExitCodeOf(machine.Outcome(), 0, 0, 0);
    EXPECT_EQ(code == TExitCode::AllCopied, machine.Outcome() == TRunOutcome::Finished) << way;
}

TEST(RunMachine, EveryOrderOfStepsIsSound) {
    constexpr int kLength = 6;
    const std::size_t count = std::size(kSteps);
    std::size_t orders = 1;
    for (int step = 0; step < kLength; ++step) {
        orders *= count;
    }
    for (std::size_t order = 0; order < orders && !testing::Test::HasFailure(); ++order) {
        TWorld world;
        std::string way;
        std::size_t rest = order;
        for (int step = 0; step < kLength; ++step, rest /= count) {
            way += std::string(way.empty() ? "" : ", ") + kSteps[rest % count].name;
            kSteps[rest % count].step(world);
            ExpectSound(world, way);
        }
    }
    EXPECT_TRUE(CopyIdle) << "a machine that goes leaves nothing running";
}

TEST(RunMachine, AnEarlierRunsTimerCannotEndTheNextOne) {
    TRunMachine machine;
    ASSERT_TRUE(machine.Start() && machine.Prepared() && machine.Stop(false));
    ASSERT_TRUE(machine.Start() && machine.NotReached());
    EXPECT_FALSE(machine.Finish());
    EXPECT_FALSE(CopyIdle) << "it waits for its user";
    EXPECT_EQ(ExitCodeOf(machine.Outcome(), 0, 0, 0), TExitCode::NotAllCopied);
}

TEST(ExitCode, WhatIsWorseCountsMore) {
    EXPECT_EQ(ExitCodeOf(TRunOutcome::Finished, 0, 2, 0), TExitCode::SourceFolderMissing);
    EXPECT_EQ(ExitCodeOf(TRunOutcome::Finished, 1, 2, 0), TExitCode::NotAllCopied);
    EXPECT_EQ(ExitCodeOf(TRunOutcome::Stopped, 0, 0, 0), TExitCode::NotAllCopied);
    EXPECT_EQ(ExitCodeOf(TRunOutcome::Stopped, 1, 2, 1), TExitCode::BadCopies);
}

}  // namespace
