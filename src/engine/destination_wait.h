// Waiting for a destination that does not answer.
#pragma once

#include <windows.h>

#include <string>

#include "engine/task_runtime.h"
#include "support/file_access.h"
#include "support/platform_calls.h"

// How often it is asked.
inline constexpr DWORD kAskAgainAfter = 1000;  // milliseconds
// How long it may be away in the middle of a run.
inline constexpr unsigned kLongestDropOut = 60;  // seconds

// Waits for `milliseconds`, or until the task is asked to stop.
void Pause(const TPlatformCalls& calls, DWORD milliseconds, const IOmniTask& task);

// Asks for a folder once a second until it answers, for at most `limit` seconds or until the task is asked to
// stop; the answer is that of the last time.
TAttributes AwaitFolder(const TPlatformCalls& calls, const std::wstring& folder, unsigned limit,
                        const IOmniTask& task);
