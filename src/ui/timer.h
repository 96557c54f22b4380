// A timer of the window's thread.
#pragma once

#include <windows.h>

#include <functional>

#include "ui/window.h"

// Calls its handler every `interval` milliseconds while enabled and while messages are handled. Belongs to
// the thread that created it.
class TTimer {
public:
    TTimer(UINT interval, std::function<void()> handler);

    bool Enabled() const { return enabled_; }
    void SetEnabled(bool enabled);

private:
    std::function<void()> handler_;
    UINT interval_;
    bool enabled_ = false;
    TMessageWindow window_;
};
