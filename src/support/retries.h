// Trying again what a virus scanner or an indexer refuses for a moment.
#pragma once

#include <atomic>
#include <functional>

#include "support/error_code.h"
#include "support/platform_calls.h"

// How long a file is worth waiting for, as the files before it showed. One for each run, shared by its
// threads.
class TPatience {
public:
    // Milliseconds for all steps of one file.
    unsigned ForOneFile() const;
    void WaitedInVain() { ++inVain_; }
    void WaitingHelped() { inVain_ = 0; }

private:
    std::atomic<unsigned> inVain_ = 0;
};

// The time that the steps of one file may wait together.
class TRetries {
public:
    TRetries(const TPlatformCalls& calls, TPatience& patience)
        : calls_(calls), patience_(patience), left_(patience.ForOneFile()) {}

    // Takes the step, and takes it again after growing pauses while it is refused as by somebody who holds
    // the file for a moment (IsTransientRefusal). The last answer.
    TErrorCode operator()(const std::function<TErrorCode()>& step);

private:
    const TPlatformCalls& calls_;
    TPatience& patience_;
    unsigned left_;
};
