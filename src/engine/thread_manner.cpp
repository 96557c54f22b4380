#include "engine/thread_manner.h"

#include <windows.h>

#include <cstddef>
#include <memory>
#include <utility>

#include "support/handles.h"

void ApplyThreadPriority(TTaskPriority level) {
    constexpr int kLevels[] = {THREAD_PRIORITY_IDLE,         THREAD_PRIORITY_LOWEST,
                               THREAD_PRIORITY_BELOW_NORMAL, THREAD_PRIORITY_NORMAL,
                               THREAD_PRIORITY_ABOVE_NORMAL, THREAD_PRIORITY_HIGHEST};
    SetThreadPriority(GetCurrentThread(), kLevels[static_cast<std::size_t>(level)]);
}

std::function<void()> BreakOffCallsOfThisThread() {
    TKernelHandle thread;
    DuplicateHandle(GetCurrentProcess(), GetCurrentThread(), GetCurrentProcess(), thread.Receive(),
                    THREAD_TERMINATE, FALSE, 0);
    return
        [thread = std::make_shared<TKernelHandle>(std::move(thread))] { CancelSynchronousIo(thread->Get()); };
}
