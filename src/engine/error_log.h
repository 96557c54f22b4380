// The log of failed copies in the backup tree.
#pragma once

#include <string_view>

#include "support/file_access.h"
#include "support/platform_calls.h"

// Appends "[<date and time>] <message>" and CR LF to the log, in UTF-8; a missing log is created.
[[nodiscard]] TErrorCode WriteErrorLog(const TPlatformCalls& calls, std::wstring_view logPath,
                                       std::wstring_view message);
