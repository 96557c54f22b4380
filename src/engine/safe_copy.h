// Copying one file so that its target is either whole or not there.
#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <string_view>

#include "engine/write_times.h"
#include "support/file_times.h"
#include "support/platform_calls.h"
#include "support/retries.h"

// What the copies of a run have found out about its destination, so that it is found out once. One object for
// each run; all its threads share it.
struct TDestinationTraits {
    TWriteTimes writeTimes;
    TPatience patience;
    std::atomic<bool> renamesOnlyByPath = false;  // refuses to rename an open file by its handle
};

// What is copied, and how its progress is told.
struct TSafeCopy {
    std::wstring_view source;
    std::wstring_view target;
    std::int64_t size = -1;                        // bytes of the source when it was asked for; -1: not asked
    const TFileTimes* times = nullptr;             // written onto the copy; none: as CopyFileExW leaves them
    bool moveAside = false;                        // the earlier copy keeps a numbered name
    bool targetMayBeSource = false;                // asks whether both are one file, which costs six calls
    const std::atomic<bool>* givenUp = nullptr;    // set by whoever waits no more: no name is taken then
    LPPROGRESS_ROUTINE progressRoutine = nullptr;  // may stop the copy
    void* progressData = nullptr;
};

struct TCopyResult {
    TErrorCode error = ERROR_SUCCESS;
    bool targetIsSource = false;  // why there is an error: one file under two names
    std::int64_t bytes = 0;       // of the copy
    FILETIME lastWrite{};         // that the copy was given: not older than the one asked for, where possible
};

// Copies to a temporary name in the target's folder, checks the size, sets the times, waits until the bytes
// are on the disk and renames over the target as the last act: at every moment, and after a power cut, the
// target is the whole old copy or the whole new one. With `moveAside` the old one gets its number right
// before that, and its name back when the rename fails; one that cannot be moved aside is not replaced. A
// target that is read-only, hidden or a system file is replaced all the same. On failure nothing is left
// beside the target. What a virus scanner holds for a moment is waited for up to a second. Several threads
// may copy at the same time, to different targets.
[[nodiscard]] TCopyResult CopyFileSafely(const TPlatformCalls& calls, TDestinationTraits& traits,
                                         const TSafeCopy& copy);
