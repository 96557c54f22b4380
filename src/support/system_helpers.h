// What the program asks of the machine it runs on: its name, its folders, a free name for a file's earlier
// copy. Nothing here throws.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

#include "support/error_code.h"
#include "support/platform_calls.h"
#include "support/retries.h"

// The machine's name as the registry has it, else as the system answers: the name of this machine's folder
// below the destination root.
std::wstring HostName();

// A text value of the registry; empty when it is absent. The key path may begin with a "\".
std::wstring RegistryText(HKEY root, std::wstring_view keyPath, const wchar_t* valueName);

// The folder for the data of all users, without a trailing "\"; empty when the registry does not say.
std::wstring CommonDataFolder();

// The folder of the program's own files below it, created when it is missing; empty when that fails.
std::wstring ConfigurationFolder(const TPlatformCalls& calls);

// The folder for temporary files, without a trailing "\".
std::wstring TemporaryFolder();

// Renames a file to the first free one of its numbered names (see NumberedName). True when that is done, or
// when there is no file at the path; false too when it cannot be told whether there is one.
[[nodiscard]] bool MoveAsideWithNumber(const TPlatformCalls& calls, std::wstring_view path);

struct TMovedAside {
    TErrorCode error = 0;    // why the file is still at its path, or whether there is one cannot be told
    std::wstring path = {};  // where the file lies now; empty also when there was none
};

// The same, as one step of many with one file.
[[nodiscard]] TMovedAside MoveAsideWithNumber(const TPlatformCalls& calls, std::wstring_view path,
                                              TRetries& retries);
