// A file system in memory behind the table of platform calls: as much of one as a scan asks for.
#pragma once

#include <windows.h>

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/case_folding.h"
#include "support/platform_calls.h"

// Files and folders with attributes and dates but without content. One at a time: the table's functions have
// no room for a context of their own.
class TMemoryFiles {
public:
    struct TNode {
        std::wstring name;
        DWORD attributes = 0;
        FILETIME lastWrite{};
    };

    TMemoryFiles() { Current() = this; }
    TMemoryFiles(const TMemoryFiles&) = delete;
    TMemoryFiles& operator=(const TMemoryFiles&) = delete;
    ~TMemoryFiles() { Current() = nullptr; }

    // Below these folders names that differ only in case are names of their own, as on some file servers.
    void MakeCaseSensitive(const std::wstring& folder) { caseSensitive_.push_back(folder); }
    // The listing of the folder breaks off after that many entries.
    void BreakListing(const std::wstring& folder, std::size_t entries) { broken_[Key(folder)] = entries; }

    // Adds a file or folder, its parents first; an existing one stays as it is.
    void Add(const std::wstring& path, DWORD attributes, FILETIME lastWrite = {}) {
        const std::size_t slash = path.rfind(L'\\');
        const std::wstring parent = slash == std::wstring::npos ? L"" : path.substr(0, slash);
        if (nodes_.contains(Key(path))) {
            return;
        }
        if (!parent.empty()) {
            Add(parent, FILE_ATTRIBUTE_DIRECTORY);
        }
        nodes_[Key(path)] = {path.substr(slash + 1), attributes, lastWrite};
        children_[Key(parent)].push_back(Key(path));
    }

    const TNode* Find(std::wstring_view path) const {
        const auto found = nodes_.find(Key(path));
        return found == nodes_.end() ? nullptr : &found->second;
    }
    // In the order in which they were added.
    std::vector<TNode> Children(std::wstring_view folder) const {
        std::vector<TNode> children;
        if (const auto found = children_.find(Key(folder)); found != children_.end()) {
            for (const std::wstring& key : found->second) {
                children.push_back(nodes_.at(key));
            }
        }
        return children;
    }

    static const TPlatformCalls& Table() {
        static const TPlatformCalls table = [] {
            TPlatformCalls calls = SystemPlatformCalls();
            calls.FindFirstFileExW = &FindFirst;
            calls.FindNextFileW = &FindNext;
            calls.FindClose = &Close;
            calls.GetFileAttributesExW = &Attributes;
            return calls;
        }();
        return table;
    }

private:
    struct TListing {
        std::vector<TNode> entries;
        std::size_t next = 0;
        DWORD end = ERROR_NO_MORE_FILES;
    };

    static TMemoryFiles*& Current() {
        static TMemoryFiles* current = nullptr;
        return current;
    }

    std::wstring Key(std::wstring_view path) const {
        const bool isSensitive = std::ranges::any_of(
            caseSensitive_, [&](const std::wstring& folder) { return path.starts_with(folder + L"\\"); });
        return isSensitive ? std::wstring(path) : FoldedCase(path);
    }

    static std::wstring_view Plain(std::wstring_view path) {
        return path.starts_with(L"\\\\?\\") ? path.substr(4) : path;
    }

    static HANDLE WINAPI FindFirst(LPCWSTR pattern, FINDEX_INFO_LEVELS, LPVOID data, FINDEX_SEARCH_OPS,
                                   LPVOID, DWORD) {
        std::wstring_view folder = Plain(pattern);
        folder.remove_suffix(2);
        const TMemoryFiles& files = *Current();
        const TNode* node = files.Find(folder);
        if (node == nullptr || (node->attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
            SetLastError(node == nullptr ? ERROR_PATH_NOT_FOUND : ERROR_DIRECTORY);
            return INVALID_HANDLE_VALUE;
        }
        auto* listing = new TListing{files.Children(folder)};
        listing->entries.insert(listing->entries.begin(), {{L".", FILE_ATTRIBUTE_DIRECTORY, {}},
                                                           {L"..", FILE_ATTRIBUTE_DIRECTORY, {}}});
        if (const auto broken = files.broken_.find(files.Key(folder)); broken != files.broken_.end()) {
            listing->entries.resize(std::min(listing->entries.size(), 2 + broken->second));
            listing->end = ERROR_UNEXP_NET_ERR;
        }
        FindNext(listing, static_cast<WIN32_FIND_DATAW*>(data));
        return listing;
    }

    static BOOL WINAPI FindNext(HANDLE handle, WIN32_FIND_DATAW* data) {
        auto* listing = static_cast<TListing*>(handle);
        if (listing->next == listing->entries.size()) {
            SetLastError(listing->end);
            return FALSE;
        }
        const TNode& node = listing->entries[listing->next++];
        *data = {};
        data->dwFileAttributes = node.attributes;
        data->ftLastWriteTime = node.lastWrite;
        node.name.copy(data->cFileName, MAX_PATH - 1);
        return TRUE;
    }

    static BOOL WINAPI Close(HANDLE handle) {
        delete static_cast<TListing*>(handle);
        return TRUE;
    }

    static BOOL WINAPI Attributes(LPCWSTR path, GET_FILEEX_INFO_LEVELS, LPVOID information) {
        const TNode* node = Current()->Find(Plain(path));
        if (node == nullptr) {
            SetLastError(ERROR_FILE_NOT_FOUND);
            return FALSE;
        }
        auto* data = static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(information);
        *data = {};
        data->dwFileAttributes = node->attributes;
        data->ftLastWriteTime = node->lastWrite;
        return TRUE;
    }

    std::vector<std::wstring> caseSensitive_;
    std::map<std::wstring, TNode> nodes_;
    std::map<std::wstring, std::vector<std::wstring>> children_;
    std::map<std::wstring, std::size_t> broken_;
};
