// Comparing one source file with its copy, byte for byte.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "support/date_time.h"
#include "support/error_code.h"
#include "support/file_times.h"
#include "support/platform_calls.h"
#include "support/retries.h"

enum class TVerdict {
    Good,              // read to the end on both sides, and the same
    ToBeCopied,        // newer than its copy, or never copied (error): the next run copies it
    InUse,             // changed while it was read, twice, or held by another program
    SourceGone,        // no longer there
    SourceUnreadable,  // error
    // The bad copies.
    Missing,       // error
    IsFolder,      // a folder lies in its place
    WrongSize,     // number: bytes of the copy; sourceSize
    WrongContent,  // number: bytes before the first that differs
    Unreadable,    // error
    Stopped,       // was not read to its end because nobody wants to know any more
};

struct TVerified {
    TVerdict verdict = TVerdict::Stopped;
    TErrorCode error = ERROR_SUCCESS;
    std::uint64_t number = 0;
    std::uint64_t sourceSize = 0;  // bytes
};

struct TFileToVerify {
    std::wstring source;
    std::wstring copy;                  // where it is, or would be
    std::optional<TDateTime> recorded;  // the date of its hash record
    bool recordsAreKnown = false;       // the hash table has records
};

// Opens both, decides by what the open files say of themselves, and reads both to their ends with at most two
// blocks of 256 KiB; the copy past the system's caches where they let it. A source that changes meanwhile is
// looked at once more. `goOn` is told the bytes of each block that was compared, and answers whether to go
// on. Writes nothing. May be called on any thread.
TVerified VerifyFile(const TPlatformCalls& calls, const TLocalTimeRule& localTime, TPatience& patience,
                     const TFileToVerify& file, const std::function<bool(std::size_t bytes)>& goOn);
