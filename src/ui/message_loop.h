// The message loop, shared by the program's own loop, modal windows and the engine's reports.
#pragma once

#include <windows.h>

#include <functional>

// Looks at every message before it is dispatched, as long as the object lives: shortcuts and the Tab key are
// found here. The filter answers true for a message it has used up. The youngest filter looks first.
class TMessageFilter {
public:
    using Handler = std::function<bool(MSG& message)>;

    explicit TMessageFilter(Handler handler);
    TMessageFilter(const TMessageFilter&) = delete;
    TMessageFilter& operator=(const TMessageFilter&) = delete;
    ~TMessageFilter();
};

// Passes one message through the filters and dispatches it.
void HandleQueuedMessage(MSG& message);

// Handles messages until `ended` is true; `ended` is asked after every message. Before it waits for more it
// calls `idle`. False when WM_QUIT came: it is posted again for the loop outside of this one.
bool RunMessageLoop(const std::function<bool()>& ended, const std::function<void()>& idle);

// Handles the waiting messages that are not about painting: input, timers, what other threads post.
void ProcessPendingInput();
