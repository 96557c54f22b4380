// How another thread asks the window's thread to look into a queue.
#pragma once

#include <atomic>
#include <functional>

#include "ui/window.h"

// Calls its handler on the thread that created it, soon after Post was called on any thread, also while a
// modal loop runs. Calls that come before the handler has started are answered together.
class TWakeUp {
public:
    explicit TWakeUp(std::function<void()> handler);

    // From any thread. False when the system refused the message (its queue is full): whoever depends on
    // the call must ask again later.
    bool Post();

private:
    std::function<void()> handler_;
    std::atomic<bool> pending_ = false;
    TMessageWindow window_;
};
