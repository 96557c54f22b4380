#include "ui/message_loop.h"

#include <algorithm>
#include <vector>

#include "ui/window.h"

namespace {

struct TFilterEntry {
    const TMessageFilter* owner;
    TMessageFilter::Handler handler;
};

std::vector<TFilterEntry>& Filters() {
    static std::vector<TFilterEntry> filters;
    return filters;
}

bool IsUsedUp(MSG& message) {
    // By value: a filter may open a window that adds another one.
    const std::vector<TFilterEntry> filters = Filters();
    return std::any_of(filters.rbegin(), filters.rend(), [&](const TFilterEntry& filter) {
        bool used = false;
        return RunGuarded([&] { used = filter.handler(message); }) && used;
    });
}

// Takes the next waiting message; false when there is none, or when the program is to end.
bool TakeMessage(MSG& message, UINT kinds) {
    if (!PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE | kinds)) {
        return false;
    }
    if (message.message == WM_QUIT) {
        PostQuitMessage(static_cast<int>(message.wParam));
        return false;
    }
    return true;
}

}  // namespace

TMessageFilter::TMessageFilter(Handler handler) {
    Filters().push_back({this, std::move(handler)});
}

TMessageFilter::~TMessageFilter() {
    std::erase_if(Filters(), [this](const TFilterEntry& filter) { return filter.owner == this; });
}

void HandleQueuedMessage(MSG& message) {
    if (!IsUsedUp(message)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

bool RunMessageLoop(const std::function<bool()>& ended, const std::function<void()>& idle) {
    MSG message{};
    while (!ended()) {
        if (!PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE)) {
            RunGuarded(idle);
        }
        const BOOL answer = GetMessageW(&message, nullptr, 0, 0);
        if (answer == 0) {
            PostQuitMessage(static_cast<int>(message.wParam));
            return false;
        }
        if (answer < 0) {
            return false;
        }
        HandleQueuedMessage(message);
    }
    return true;
}

void ProcessPendingMessages() {
    MSG message{};
    while (TakeMessage(message, 0)) {
        HandleQueuedMessage(message);
    }
}

void ProcessPendingInput() {
    MSG message{};
    while (TakeMessage(message, PM_QS_INPUT | PM_QS_POSTMESSAGE | PM_QS_SENDMESSAGE)) {
        HandleQueuedMessage(message);
    }
}
