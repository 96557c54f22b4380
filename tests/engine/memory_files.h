// A file system in memory behind the table of platform calls: as much of one as a scan asks for.
#pragma once

#include <windows.h>

#include <algorithm>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/case_folding.h"
#include "support/platform_calls.h"

// Files and folders with attributes, dates and sizes; their content is as many "x". One at a time: the
// table's functions have no room for a context of their own.
class TMemoryFiles {
public:
    struct TNode {
        std::wstring name;
        DWORD attributes = 0;
        FILETIME lastWrite{};
        DWORD size = 0;
        std::wstring path = {};
        DWORD index = 0;
    };

    TMemoryFiles() { Current() = this; }
    TMemoryFiles(const TMemoryFiles&) = delete;
    TMemoryFiles& operator=(const TMemoryFiles&) = delete;
    ~TMemoryFiles() { Current() = nullptr; }

    // Below these folders names that differ only in case are names of their own, as on some file servers.
    void MakeCaseSensitive(const std::wstring& folder) { caseSensitive_.push_back(folder); }
    // Below the folder names are compared as if letters and their accents were always apart.
    void IgnoreAccents(const std::wstring& folder) { withoutAccents_.push_back(folder); }
    // What is asked of a path, or of one below it, is answered for the target: a link, if something was added
    // under that path before, or a substituted drive.
    void Alias(const std::wstring& path, const std::wstring& target) { aliases_[FoldedCase(path)] = target; }
    // The file or folder and all below it are gone.
    void Remove(const std::wstring& path) {
        const std::wstring key = Key(path);
        const auto isInside = [&](const std::wstring& other) {
            return other == key || other.starts_with(key + L"\\");
        };
        std::erase_if(nodes_, [&](const auto& node) { return isInside(node.first); });
        std::erase_if(children_, [&](const auto& folder) { return isInside(folder.first); });
        for (auto& [folder, children] : children_) {
            std::erase_if(children, isInside);
        }
    }
    // Called before a folder is listed.
    std::function<void(std::wstring_view folder)> beforeListing;
    // The listing of the folder breaks off after that many entries.
    void BreakListing(const std::wstring& folder, std::size_t entries) { broken_[Key(folder)] = entries; }

    // Adds a file or folder, its parents first; an existing one stays as it is.
    void Add(const std::wstring& path, DWORD attributes, FILETIME lastWrite = {}, DWORD size = 0) {
        const std::size_t slash = path.rfind(L'\\');
        const std::wstring parent = slash == std::wstring::npos ? L"" : path.substr(0, slash);
        if (nodes_.contains(Key(path))) {
            return;
        }
        if (!parent.empty()) {
            Add(parent, FILE_ATTRIBUTE_DIRECTORY);
        }
        nodes_[Key(path)] = {path.substr(slash + 1), attributes, lastWrite, size, path, ++lastIndex_};
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
            calls.CreateFileW = &Open;
            calls.GetFileInformationByHandle = &Information;
            calls.GetFileSizeEx = &Size;
            calls.GetFileTime = &Times;
            calls.ReadFile = &Read;
            calls.GetFinalPathNameByHandleW = &FinalPathName;
            calls.CloseHandle = [](HANDLE) -> BOOL { return TRUE; };
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

    static bool IsIn(std::wstring_view path, const std::vector<std::wstring>& folders) {
        return std::ranges::any_of(
            folders, [&](const std::wstring& folder) { return path.starts_with(folder + L"\\"); });
    }

    std::wstring Key(std::wstring_view path) const {
        for (const auto& [alias, target] : aliases_) {
            if (FoldedCase(path) == alias || FoldedCase(path).starts_with(alias + L"\\")) {
                return Key(target + std::wstring(path.substr(alias.size())));
            }
        }
        if (IsIn(path, withoutAccents_)) {
            return NameKey(path);
        }
        return IsIn(path, caseSensitive_) ? std::wstring(path) : FoldedCase(path);
    }

    static std::wstring_view Plain(std::wstring_view path) {
        if (path.starts_with(L"\\\\?\\")) {
            path.remove_prefix(4);
        }
        return path.ends_with(L'\\') ? path.substr(0, path.size() - 1) : path;
    }

    static HANDLE WINAPI FindFirst(LPCWSTR pattern, FINDEX_INFO_LEVELS, LPVOID data, FINDEX_SEARCH_OPS,
                                   LPVOID, DWORD) {
        std::wstring_view folder = Plain(pattern);
        folder.remove_suffix(2);  // "\\*"
        const TMemoryFiles& files = *Current();
        if (files.beforeListing) {
            files.beforeListing(folder);
        }
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
        data->nFileSizeLow = node.size;
        data->dwReserved0 =
            (node.attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 ? IO_REPARSE_TAG_SYMLINK : 0;
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
        data->nFileSizeLow = node->size;
        return TRUE;
    }

    static HANDLE WINAPI Open(LPCWSTR path, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD, HANDLE) {
        const TNode* node = Current()->Find(Plain(path));
        SetLastError(node == nullptr ? ERROR_PATH_NOT_FOUND : ERROR_SUCCESS);
        return node == nullptr ? INVALID_HANDLE_VALUE : const_cast<TNode*>(node);
    }

    static BOOL WINAPI Information(HANDLE handle, LPBY_HANDLE_FILE_INFORMATION information) {
        const auto* node = static_cast<const TNode*>(handle);
        *information = {};
        information->dwFileAttributes = node->attributes;
        information->ftLastWriteTime = node->lastWrite;
        information->nFileSizeLow = node->size;
        information->nFileIndexLow = node->index;
        return TRUE;
    }

    static BOOL WINAPI Size(HANDLE handle, PLARGE_INTEGER size) {
        size->QuadPart = static_cast<const TNode*>(handle)->size;
        return TRUE;
    }

    static BOOL WINAPI Times(HANDLE handle, LPFILETIME, LPFILETIME, LPFILETIME lastWrite) {
        *lastWrite = static_cast<const TNode*>(handle)->lastWrite;
        return TRUE;
    }

    // All of it, for those who have room for that.
    static BOOL WINAPI Read(HANDLE handle, LPVOID bytes, DWORD size, LPDWORD read, LPOVERLAPPED) {
        *read = std::min(size, static_cast<const TNode*>(handle)->size);
        std::fill_n(static_cast<char*>(bytes), *read, 'x');
        return TRUE;
    }

    static DWORD WINAPI FinalPathName(HANDLE handle, LPWSTR text, DWORD size, DWORD) {
        const std::wstring path = L"\\\\?\\" + static_cast<const TNode*>(handle)->path;
        if (path.size() < size) {
            path.copy(text, path.size());
            text[path.size()] = L'\0';
            return static_cast<DWORD>(path.size());
        }
        return static_cast<DWORD>(path.size() + 1);
    }

    std::vector<std::wstring> caseSensitive_;
    std::vector<std::wstring> withoutAccents_;
    std::map<std::wstring, std::wstring> aliases_;  // targets by what leads there, in upper case
    DWORD lastIndex_ = 0;
    std::map<std::wstring, TNode> nodes_;
    std::map<std::wstring, std::vector<std::wstring>> children_;
    std::map<std::wstring, std::size_t> broken_;
};
