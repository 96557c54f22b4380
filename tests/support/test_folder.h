// A folder of its own for a test that works on real files.
#pragma once

#include <windows.h>

#include <stdexcept>
#include <string>
#include <string_view>

#include "support/file_access.h"
#include "support/path_text.h"
#include "support/platform_calls.h"

// Makes an empty folder below the temporary folder, and removes it with everything in it at the end.
class TTestFolder {
public:
    TTestFolder() {
        static int counter = 0;
        wchar_t temporary[MAX_PATH] = {};
        GetTempPathW(MAX_PATH, temporary);
        path_ = std::wstring(temporary) + L"VardekoTest-" + std::to_wstring(GetCurrentProcessId()) + L"-" +
                std::to_wstring(++counter);
        if (!CreateFolders(SystemPlatformCalls(), path_)) {
            throw std::runtime_error("the test's folder cannot be made");
        }
    }
    TTestFolder(const TTestFolder&) = delete;
    TTestFolder& operator=(const TTestFolder&) = delete;
    ~TTestFolder() { RemoveWithContents(path_); }

    const std::wstring& Path() const { return path_; }
    std::wstring operator/(std::wstring_view name) const { return path_ + L"\\" + std::wstring(name); }

    // Makes a file of that name with that content and returns its path.
    std::wstring MakeFile(std::wstring_view name, std::string_view content = "") const {
        std::wstring path = *this / name;
        const HANDLE file = CreateFileW(ExtendedPath(path).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                        FILE_ATTRIBUTE_NORMAL, nullptr);
        DWORD written = 0;
        if (file == INVALID_HANDLE_VALUE ||
            !WriteFile(file, content.data(), static_cast<DWORD>(content.size()), &written, nullptr)) {
            throw std::runtime_error("a file of the test cannot be made");
        }
        CloseHandle(file);
        return path;
    }

private:
    static void RemoveWithContents(const std::wstring& folder) {
        WIN32_FIND_DATAW entry{};
        const HANDLE listing = FindFirstFileW(ExtendedPath(folder + L"\\*").c_str(), &entry);
        if (listing != INVALID_HANDLE_VALUE) {
            do {
                const std::wstring_view name = entry.cFileName;
                if (name == L"." || name == L"..") {
                    continue;
                }
                const std::wstring path = folder + L"\\" + std::wstring(name);
                if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
                    RemoveWithContents(path);
                } else {
                    SetFileAttributesW(ExtendedPath(path).c_str(), FILE_ATTRIBUTE_NORMAL);
                    DeleteFileW(ExtendedPath(path).c_str());
                }
            } while (FindNextFileW(listing, &entry));
            FindClose(listing);
        }
        RemoveDirectoryW(ExtendedPath(folder).c_str());
    }

    std::wstring path_;
};

// The content of a file; "<missing>" when it cannot be read.
inline std::string ContentOf(std::wstring_view path) {
    std::string bytes;
    return ReadWholeFile(SystemPlatformCalls(), path, bytes) == ERROR_SUCCESS ? bytes : "<missing>";
}
