// The thread on which a transfer waits for its server.
#pragma once

#include <windows.h>

#include <functional>
#include <thread>

#include "support/handles.h"
#include "ui/wake_up.h"

// Runs one piece of work at a time on a thread of its own, tells the window's thread about it, and ends it at
// once when asked. Belongs to the window's thread; only Notify and Cancelled are for the work too.
class TTransferThread {
public:
    // `woken` runs on the window's thread soon after each Notify.
    explicit TTransferThread(std::function<void()> woken);
    TTransferThread(const TTransferThread&) = delete;
    TTransferThread& operator=(const TTransferThread&) = delete;
    ~TTransferThread();

    // Starts the work, which must end soon after Cancelled is set and throw nothing. Whatever ran before is
    // stopped first. Throws std::system_error when the system refuses a thread.
    void Start(std::function<void()> work);

    // Asks the work to end without waiting for it.
    void Cancel() { SetEvent(cancelled_.Get()); }

    // Asks the work to end and waits for it.
    void Stop();

    // An event that is set once the work shall end.
    HANDLE Cancelled() const { return cancelled_.Get(); }

    // From the work: has `woken` called. Asks again while the system refuses, so that no call is lost.
    void Notify();

private:
    TKernelHandle cancelled_{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    TWakeUp wakeUp_;
    std::thread thread_;
};
