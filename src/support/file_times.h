// The times of files, and what they are in local time.
#pragma once

#include <windows.h>

#include <optional>
#include <string_view>

#include "support/date_time.h"
#include "support/file_access.h"
#include "support/platform_calls.h"

// Nothing when the path cannot be queried.
std::optional<TFileTimes> ReadFileTimes(const TPlatformCalls& calls, std::wstring_view path);

// False when the file cannot be opened for writing, or its times cannot be set.
[[nodiscard]] bool WriteFileTimes(const TPlatformCalls& calls, std::wstring_view path,
                                  const TFileTimes& times);

// The machine's time-zone rules, asked for once: whoever converts many times keeps one.
class TLocalTimeRule {
public:
    TLocalTimeRule();
    explicit TLocalTimeRule(const TIME_ZONE_INFORMATION& zone) : zone_(zone) {}

    // The local date-time of a file time, in whole milliseconds (rounded down); each time converts by the
    // daylight-saving rule for its own date. 0 for a time that has no date.
    TDateTime ToLocal(const FILETIME& time) const;

private:
    TIME_ZONE_INFORMATION zone_{};
};

// The local date-time at which the file was last written; 0 when the path cannot be queried.
TDateTime LastWriteDateTime(const TPlatformCalls& calls, const TLocalTimeRule& rule, std::wstring_view path);
