// "NASConf.Dat": the source-folder table on disk.
#pragma once

#include <string_view>

#include "store/source_folder_table.h"
#include "support/file_access.h"
#include "support/platform_calls.h"

// Loads the table from its file and opens it. False when there is no such file: the table is empty. Throws
// EProblem (FileNotRead, or why it is no such table) when it cannot be read; the table is closed then.
bool LoadSourceFolders(const TPlatformCalls& calls, std::wstring_view path, TSourceFolderTable& table);

// Replaces the file with the rows of the table. An edit in progress is not part of it.
[[nodiscard]] TErrorCode SaveSourceFolders(const TPlatformCalls& calls, std::wstring_view path,
                                           TSourceFolderTable& table);
