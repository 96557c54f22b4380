// A folder of a test's own on the real file system, gone when the test ends.
#pragma once

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>

#include "support/file_access.h"
#include "support/file_times.h"
#include "support/path_text.h"
#include "support/system_helpers.h"

// Paths given to it are relative to the folder, with "\" as separator; they may be long.
class TTestFolder {
public:
    TTestFolder() {
        static int count = 0;
        path_ = TemporaryFolder() + L"\\VARDEKO-TEST-" + std::to_wstring(GetCurrentProcessId()) + L"-" +
                std::to_wstring(++count);
        static_cast<void>(CreateFolders(SystemPlatformCalls(), path_));
    }
    TTestFolder(const TTestFolder&) = delete;
    TTestFolder& operator=(const TTestFolder&) = delete;
    ~TTestFolder() { RemoveTree(ExtendedPath(path_)); }

    const std::wstring& Path() const { return path_; }
    std::wstring At(std::wstring_view relative) const { return path_ + L"\\" + std::wstring(relative); }

    // Writes a file with its parent folders, and dates it when a time is given.
    std::wstring Write(std::wstring_view relative, std::string_view content,
                       std::optional<FILETIME> lastWrite = std::nullopt) const {
        const std::wstring path = At(relative);
        static_cast<void>(CreateFolders(SystemPlatformCalls(), RemoveTrailingSeparator(FolderPart(path))));
        {
            std::ofstream file(std::filesystem::path(ExtendedPath(path)), std::ios::binary);
            file << content;
        }
        if (lastWrite) {
            static_cast<void>(
                WriteFileTimes(SystemPlatformCalls(), path, TFileTimes{*lastWrite, *lastWrite, *lastWrite}));
        }
        return path;
    }

    // Makes a file of that many zero bytes.
    std::wstring WriteZeros(std::wstring_view relative, LONGLONG size) const {
        const std::wstring path = Write(relative, "");
        const HANDLE file =
            CreateFileW(ExtendedPath(path).c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        LARGE_INTEGER end{};
        end.QuadPart = size;
        SetFilePointerEx(file, end, nullptr, FILE_BEGIN);
        SetEndOfFile(file);
        CloseHandle(file);
        return path;
    }

    // The whole content; nothing when there is no such file.
    std::optional<std::string> Read(std::wstring_view relative) const {
        std::string bytes;
        if (ReadWholeFile(SystemPlatformCalls(), At(relative), bytes) != ERROR_SUCCESS) {
            return std::nullopt;
        }
        return bytes;
    }

    // The number of files in the tree.
    std::size_t FileCount() const {
        std::size_t count = 0;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(ExtendedPath(path_))) {
            count += entry.is_regular_file() ? 1 : 0;
        }
        return count;
    }

    // Removes all that is in the folder.
    void Clear() const { RemoveContent(ExtendedPath(path_)); }

private:
    // The standard library's way costs ten times as much here.
    static void RemoveContent(const std::wstring& path) {
        WIN32_FIND_DATAW entry{};
        const HANDLE find = FindFirstFileW((path + L"\\*").c_str(), &entry);
        if (find == INVALID_HANDLE_VALUE) {
            return;
        }
        do {
            const std::wstring_view name = entry.cFileName;
            const std::wstring child = path + L"\\" + entry.cFileName;
            if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
                SetFileAttributesW(child.c_str(), FILE_ATTRIBUTE_NORMAL);
                DeleteFileW(child.c_str());
            } else if (name != L"." && name != L"..") {
                RemoveTree(child);
            }
        } while (FindNextFileW(find, &entry));
        FindClose(find);
    }

    static void RemoveTree(const std::wstring& path) {
        RemoveContent(path);
        RemoveDirectoryW(path.c_str());
    }

    std::wstring path_;
};

// The content of the file of that full path; "<missing>" when there is none.
inline std::string ContentOf(std::wstring_view path) {
    std::string bytes;
    return ReadWholeFile(SystemPlatformCalls(), path, bytes) == ERROR_SUCCESS ? bytes : "<missing>";
}

// A file time some seconds after 1 June 2020 12:00 UTC.
inline FILETIME TestTime(std::int64_t seconds) {
    constexpr std::int64_t kBase = 132354864000000000;
    const std::int64_t ticks = kBase + seconds * 10'000'000;
    return {static_cast<DWORD>(ticks & 0xFFFFFFFF), static_cast<DWORD>(ticks >> 32)};
}
