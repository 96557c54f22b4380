#include "support/system_helpers.h"

#include <cstdint>
#include <optional>
#include <unordered_set>

#include "support/case_folding.h"
#include "support/file_access.h"
#include "support/handles.h"
#include "support/path_text.h"

namespace {

constexpr DWORD kComputerNameLength = 255;
// A file with more earlier copies than this has its numbers read from one listing: asking for each of
// hundreds takes seconds on a slow share.
constexpr std::uint64_t kNumbersAskedFor = 8;

std::optional<std::wstring> RegistryValue(HKEY root, std::wstring_view keyPath, const wchar_t* valueName) {
    if (keyPath.starts_with(L'\\')) {
        keyPath.remove_prefix(1);  // the registry's functions take no such path
    }
    TRegistryKey key;
    if (RegOpenKeyExW(root, std::wstring(keyPath).c_str(), 0, KEY_READ, key.Receive()) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    constexpr DWORD kFlags = RRF_RT_REG_SZ | RRF_RT_REG_EXPAND_SZ | RRF_NOEXPAND;
    std::wstring text;
    for (DWORD size = 512;;) {
        text.resize(size / sizeof(wchar_t));
        const LSTATUS status =
            RegGetValueW(key.Get(), nullptr, valueName, kFlags, nullptr, text.data(), &size);
        if (status == ERROR_SUCCESS) {
            text.resize(size / sizeof(wchar_t) - 1);  // the terminator counts
            return text;
        }
        if (status != ERROR_MORE_DATA) {
            return std::nullopt;
        }
    }
}

// The number in the name of an earlier copy ("report #012.txt" of "report.txt"); nothing for other names.
std::optional<std::uint64_t> NumberInName(std::wstring_view name, std::wstring_view original) {
    const std::size_t digitsBegin = original.size() - ExtensionPart(original).size() + 2;
    const std::size_t added = name.size() - original.size();
    if (name.size() <= original.size() || added < 2 || added > 2 + 18) {
        return std::nullopt;
    }
    std::uint64_t number = 0;
    for (const wchar_t digit : name.substr(digitsBegin, added - 2)) {
        if (digit < L'0' || digit > L'9') {
            return std::nullopt;
        }
        number = number * 10 + static_cast<std::uint64_t>(digit - L'0');
    }
    if (FoldedCase(name) != FoldedCase(NumberedName(original, number))) {
        return std::nullopt;
    }
    return number;
}

// The first number from `number` on that no file in a listing of the earlier copies has. A listing that
// breaks off only makes it smaller.
std::uint64_t FirstUnlistedNumber(const TPlatformCalls& calls, std::wstring_view path, std::uint64_t number) {
    const std::wstring_view original = FileNamePart(path);
    const std::wstring_view extension = ExtensionPart(path);
    std::wstring pattern(path.substr(0, path.size() - extension.size()));
    pattern += L" #*";
    pattern += extension;
    WIN32_FIND_DATAW entry{};
    const HANDLE listing = calls.FindFirstFileExW(ExtendedPath(pattern).c_str(), FindExInfoBasic, &entry,
                                                  FindExSearchNameMatch, nullptr, 0);
    if (listing == INVALID_HANDLE_VALUE) {
        return number;
    }
    std::unordered_set<std::uint64_t> taken;
    do {
        if (const auto found = NumberInName(entry.cFileName, original)) {
            taken.insert(*found);
        }
    } while (calls.FindNextFileW(listing, &entry));
    calls.FindClose(listing);
    while (taken.contains(number)) {
        ++number;
    }
    return number;
}

}  // namespace

std::wstring HostName() {
    if (auto name = RegistryValue(HKEY_LOCAL_MACHINE,
                                  L"\\SYSTEM\\CurrentControlSet\\Control\\ComputerName\\ComputerName",
                                  L"ComputerName")) {
        return *std::move(name);
    }
    wchar_t name[kComputerNameLength] = {};
    DWORD length = kComputerNameLength;
    return GetComputerNameW(name, &length) ? std::wstring(name, length) : std::wstring();
}

std::wstring RegistryText(HKEY root, std::wstring_view keyPath, const wchar_t* valueName) {
    return RegistryValue(root, keyPath, valueName).value_or(std::wstring());
}

std::wstring CommonDataFolder() {
    return std::wstring(RemoveTrailingSeparator(RegistryText(
        HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\explorer\\Shell Folders",
        L"Common AppData")));
}

std::wstring ConfigurationFolder(const TPlatformCalls& calls) {
    std::wstring folder = CommonDataFolder() + L"\\Vardeko";
    return CreateFolders(calls, folder) ? folder : std::wstring();
}

std::wstring TemporaryFolder() {
    wchar_t folder[MAX_PATH] = {};
    const DWORD length = GetTempPathW(MAX_PATH, folder);
    if (length == 0 || length >= MAX_PATH) {
        return {};
    }
    return std::wstring(RemoveTrailingSeparator(std::wstring_view(folder, length)));
}

bool MoveAsideWithNumber(const TPlatformCalls& calls, std::wstring_view path) {
    TPatience patience;
    TRetries retries(calls, patience);
    return MoveAsideWithNumber(calls, path, retries).error == ERROR_SUCCESS;
}

TMovedAside MoveAsideWithNumber(const TPlatformCalls& calls, std::wstring_view path, TRetries& retries) {
    const TAttributes attributes = QueryAttributes(calls, path);
    if (!attributes.IsFile()) {
        return {IsMissing(attributes.error) ? TErrorCode{ERROR_SUCCESS} : attributes.error};
    }
    std::uint64_t number = 1;
    while (FileExists(calls, NumberedName(path, number))) {
        ++number;
        if (number == kNumbersAskedFor + 1) {
            number = FirstUnlistedNumber(calls, path, number);
        }
    }
    std::wstring numbered = NumberedName(path, number);
    const TErrorCode error = retries([&]() -> TErrorCode {
        return calls.MoveFileW(ExtendedPath(path).c_str(), ExtendedPath(numbered).c_str()) ? ERROR_SUCCESS
                                                                                           : LastFailure();
    });
    return error == ERROR_SUCCESS ? TMovedAside{ERROR_SUCCESS, std::move(numbered)} : TMovedAside{error};
}
