#include "engine/destination_wait.h"

void Pause(const TPlatformCalls& calls, DWORD milliseconds, const IOmniTask& task) {
    constexpr DWORD kStep = 50;  // a stop is answered within this time
    for (DWORD waited = 0; waited < milliseconds && !task.Terminated(); waited += kStep) {
        calls.Sleep(kStep);
    }
}

TAttributes AwaitFolder(const TPlatformCalls& calls, const std::wstring& folder, unsigned limit,
                        const IOmniTask& task) {
    const ULONGLONG begun = calls.GetTickCount64();
    TAttributes answer = QueryAttributes(calls, folder);
    while (!answer.IsFolder() && !task.Terminated() && calls.GetTickCount64() - begun < limit * 1000ULL) {
        Pause(calls, kAskAgainAfter, task);
        answer = QueryAttributes(calls, folder);
    }
    return answer;
}
