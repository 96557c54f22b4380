// Which hash tables this computer has saved, and how large they were.
#pragma once

#include <cstdint>
#include <string>

#include "support/error_code.h"
#include "support/platform_calls.h"

std::wstring SeenTablesFile(const std::wstring& configurationFolder);

// A destination that is an empty mount point, or another disk, looks like a new one: everything would be
// copied again, or to the wrong place, without a word. So it is remembered, in "NASSeen.ini" in the
// configuration folder, that a table with records was saved there. What cannot be read there is taken for
// never seen and left as it is: a run does not fail because of it.
void RememberTable(const TPlatformCalls& calls, const std::wstring& configurationFolder,
                   const std::wstring& tableFile, std::uint64_t records);

// Where the next check of a part of the backup begins (engine/verify_rules.h), 0 when there was none yet.
// Kept for each table, in the same file. Where it cannot be remembered, the next check sees the same part
// again: somebody must hear of that.
unsigned VerifiedUpTo(const TPlatformCalls& calls, const std::wstring& configurationFolder,
                      const std::wstring& tableFile);
[[nodiscard]] TErrorCode RememberVerified(const TPlatformCalls& calls,
                                          const std::wstring& configurationFolder,
                                          const std::wstring& tableFile, unsigned next);

// The records that the table had when it was last saved, 0 when it never was; forgets them, so that a
// missing table is told once.
std::uint64_t TakeSeenRecords(const TPlatformCalls& calls, const std::wstring& configurationFolder,
                              const std::wstring& tableFile);
