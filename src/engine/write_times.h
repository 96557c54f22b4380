// The write times of copies where the destination keeps only whole or even seconds.
#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>

#include "support/file_times.h"
#include "support/platform_calls.h"

// Sets the times of copies, so that none is older than its source although the destination rounds: such a
// copy would be made again every night. What the destination keeps is found out at the first copies by
// reading back; one object for each run, shared by its threads.
class TWriteTimes {
public:
    // Sets all three times, the last-write time rounded up to what the destination keeps. Returns the one
    // that the copy was given. A copy whose times cannot be set is a copy all the same.
    FILETIME Set(const TPlatformCalls& calls, HANDLE file, const TFileTimes& times);

private:
    // In units of 100 ns. More than 0: what write times are rounded to. Less: multiples of it are kept as
    // they are, finer ones have not been tried. 0: nothing is known.
    std::atomic<std::int64_t> unit_ = 0;
};
