// Whole files and single questions to the file system, through the table of platform calls. Every path is
// the plain text of a path; the form for long paths is made here.
#pragma once

#include <windows.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "support/error_code.h"
#include "support/platform_calls.h"

// The three times of a file, in UTC.
struct TFileTimes {
    FILETIME creation{};
    FILETIME lastAccess{};
    FILETIME lastWrite{};
};

// What a path's attributes say: existence, kind, size (bytes) and times in one question.
struct TAttributes {
    TErrorCode error = ERROR_SUCCESS;  // why there is no answer; `data` is empty then
    WIN32_FILE_ATTRIBUTE_DATA data{};

    bool Exists() const { return error == ERROR_SUCCESS; }
    bool IsFolder() const { return Exists() && (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0; }
    bool IsFile() const { return Exists() && (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0; }
    bool IsReadOnlyFile() const { return IsFile() && (data.dwFileAttributes & FILE_ATTRIBUTE_READONLY) != 0; }
    std::int64_t Size() const {
        return static_cast<std::int64_t>(data.nFileSizeHigh) << 32 | data.nFileSizeLow;
    }
    TFileTimes Times() const { return {data.ftCreationTime, data.ftLastAccessTime, data.ftLastWriteTime}; }
};

TAttributes QueryAttributes(const TPlatformCalls& calls, std::wstring_view path);

bool FileExists(const TPlatformCalls& calls, std::wstring_view path);
bool FolderExists(const TPlatformCalls& calls, std::wstring_view path);

// Creates the folder with all missing parents; true when it exists afterwards.
[[nodiscard]] bool CreateFolders(const TPlatformCalls& calls, std::wstring_view path);

// Creates the folder and those of its parents that lie below `root`, which must exist: neither it nor what is
// above it is made. ERROR_PATH_NOT_FOUND when it is missing.
[[nodiscard]] TErrorCode CreateFoldersBelow(const TPlatformCalls& calls, std::wstring_view root,
                                            std::wstring_view path);

// Reads a whole file into bytes.
[[nodiscard]] TErrorCode ReadWholeFile(const TPlatformCalls& calls, std::wstring_view path,
                                       std::string& bytes);

// Reads a whole file of ours and passes its bytes on; false when there is none. Throws EProblem: FileNotRead,
// or what `take` throws, with the path of the file.
bool LoadFile(const TPlatformCalls& calls, std::wstring_view path,
              const std::function<void(std::string_view bytes)>& take);

// Takes the next bytes of a file being written; the error code if they could not be written.
using TByteSink = std::function<TErrorCode(std::string_view)>;

// Those of its folder, or also what an administrator gave the old file beyond them.
enum class TRightsOfNewFile { OfFolder, AsBefore };

// Replaces a file whole: what `write` gives to its sink goes to a file beside it, which is flushed and then
// renamed over the old one. When anything fails the old file is untouched and nothing is left beside it.
// Waits up to a second for whoever holds one of the two for a moment.
[[nodiscard]] TErrorCode ReplaceWholeFile(const TPlatformCalls& calls, std::wstring_view path,
                                          const std::function<TErrorCode(const TByteSink&)>& write,
                                          TRightsOfNewFile rights = TRightsOfNewFile::OfFolder);

// Deletes a file, a read-only one too.
TErrorCode RemoveFile(const TPlatformCalls& calls, std::wstring_view path);

// Appends the bytes to a file, creating it when it is missing. Waits up to a second for whoever holds it.
[[nodiscard]] TErrorCode AppendToFile(const TPlatformCalls& calls, std::wstring_view path,
                                      std::string_view bytes);
