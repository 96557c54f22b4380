// Copying one file so that its target is either whole or not there.
#pragma once

#include <windows.h>

#include <string_view>

#include "support/file_access.h"
#include "support/file_times.h"
#include "support/platform_calls.h"

// What is copied, and how its progress is told.
struct TSafeCopy {
    std::wstring_view source;
    std::wstring_view target;
    const TFileTimes* times = nullptr;             // written onto the copy; none: as CopyFileExW leaves them
    LPPROGRESS_ROUTINE progressRoutine = nullptr;  // may stop the copy
    void* progressData = nullptr;
};

// Copies to a temporary name in the target's folder, sets the times and renames over the target as the last
// act: at every moment the target is the whole old copy or the whole new one. A target that is read-only,
// hidden or a system file is replaced all the same. On failure nothing is left beside the target.
[[nodiscard]] TErrorCode CopyFileSafely(const TPlatformCalls& calls, const TSafeCopy& copy);
