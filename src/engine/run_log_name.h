// The names of run logs, and which of them are too many.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "support/date_time.h"

// "2026-11-23 20-00-00.txt": names in the order of the alphabet are logs in the order of their runs.
std::wstring RunLogName(TDateTime start);
// Whether RunLogName gives such names. Only these files are ever removed.
bool IsRunLogName(std::wstring_view name);
// Of the names those of the oldest run logs, so that `kept` of them stay.
std::vector<std::wstring> SuperfluousRunLogs(std::vector<std::wstring> names, std::size_t kept);
