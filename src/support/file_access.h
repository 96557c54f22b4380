// Whole files and single questions to the file system, through the table of platform calls. Every path is
// the plain text of a path; the form for long paths is made here.
#pragma once

#include <windows.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "support/platform_calls.h"

// The error code of a call that failed; ERROR_SUCCESS when it did not.
using TErrorCode = DWORD;

// What a file's attributes say: existence, kind, size and times in one question; nothing when the path
// cannot be queried (missing, no access).
std::optional<WIN32_FILE_ATTRIBUTE_DATA> QueryAttributes(const TPlatformCalls& calls, std::wstring_view path);

bool FileExists(const TPlatformCalls& calls, std::wstring_view path);
bool FolderExists(const TPlatformCalls& calls, std::wstring_view path);

// Whether an error code says that the drive or the server behind a path does not answer, so that asking for
// other paths there would only wait once more.
bool IsOutOfReach(TErrorCode error);

// Creates the folder with all missing parents; true when it exists afterwards.
[[nodiscard]] bool CreateFolders(const TPlatformCalls& calls, std::wstring_view path);

// Reads a whole file into bytes.
[[nodiscard]] TErrorCode ReadWholeFile(const TPlatformCalls& calls, std::wstring_view path,
                                       std::string& bytes);

// Takes the next bytes of a file being written; the error code if they could not be written.
using TByteSink = std::function<TErrorCode(std::string_view)>;

// Replaces a file whole: what `write` gives to its sink goes to a file beside it, which is flushed and then
// renamed over the old one. When anything fails the old file is untouched and nothing is left beside it.
[[nodiscard]] TErrorCode ReplaceWholeFile(const TPlatformCalls& calls, std::wstring_view path,
                                          const std::function<TErrorCode(const TByteSink&)>& write);

// Deletes a file, a read-only one too.
void RemoveFile(const TPlatformCalls& calls, std::wstring_view path);

// Appends the bytes to a file, creating it when it is missing.
[[nodiscard]] TErrorCode AppendToFile(const TPlatformCalls& calls, std::wstring_view path,
                                      std::string_view bytes);
