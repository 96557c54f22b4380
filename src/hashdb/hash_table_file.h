// "Vardeko.dat": the hash table on disk.
#pragma once

#include <string_view>

#include "hashdb/hash_table.h"
#include "support/file_access.h"
#include "support/platform_calls.h"

// Replaces the records by those of the file and opens the table. False when there is no such file: the table
// stays as it was. Throws EProblem (FileNotRead, or why it is no such table) when it cannot be read; the
// table stays as it was then too.
bool LoadHashTable(const TPlatformCalls& calls, std::wstring_view path, THashTable& table);

// Replaces the file with the records of a table: with an index `sorted`, without one in the order in which
// they came.
[[nodiscard]] TErrorCode SaveHashTable(const TPlatformCalls& calls, std::wstring_view path,
                                       const THashSnapshot& records, bool sorted);
