#include "support/path_text.h"

#include <algorithm>
#include <vector>

namespace {

constexpr std::wstring_view kSeparators = L"\\/";

bool IsDriveLetter(wchar_t letter) {
    return (letter >= L'A' && letter <= L'Z') || (letter >= L'a' && letter <= L'z');
}

bool IsSeparator(wchar_t letter) {
    return letter == L'\\' || letter == L'/';
}

bool StartsWithTwoSeparators(std::wstring_view path) {
    return path.size() >= 2 && IsSeparator(path[0]) && IsSeparator(path[1]);
}

// The components of the path behind its root, with "." and ".." resolved.
std::vector<std::wstring_view> ResolvedComponents(std::wstring_view path, std::size_t fixedCount) {
    std::vector<std::wstring_view> components;
    while (!path.empty()) {
        const std::size_t end = std::min(path.find_first_of(kSeparators), path.size());
        const std::wstring_view component = path.substr(0, end);
        path.remove_prefix(std::min(end + 1, path.size()));
        if (component == L"..") {
            if (components.size() > fixedCount) {
                components.pop_back();
            }
        } else if (!component.empty() && component != L".") {
            components.push_back(component);
        }
    }
    return components;
}

std::wstring Joined(std::wstring prefix, const std::vector<std::wstring_view>& components) {
    for (std::size_t index = 0; index < components.size(); ++index) {
        prefix += index == 0 ? L"" : L"\\";
        prefix += components[index];
    }
    return prefix;
}

}  // namespace

std::wstring_view RemoveTrailingSeparator(std::wstring_view path) {
    if (path.ends_with(L'\\')) {
        path.remove_suffix(1);
    }
    return path;
}

std::wstring_view DrivePart(std::wstring_view path) {
    if (path.size() >= 2 && path[1] == L':') {
        return path.substr(0, 2);
    }
    if (!path.starts_with(L"\\\\")) {
        return {};
    }
    const std::size_t serverEnd = path.find(L'\\', 2);
    if (serverEnd == std::wstring_view::npos || serverEnd == 2) {
        return {};
    }
    return path.substr(0, std::min(path.find(L'\\', serverEnd + 1), path.size()));
}

std::wstring_view FolderPart(std::wstring_view path) {
    const std::size_t last = path.find_last_of(L"\\:");
    return last == std::wstring_view::npos ? std::wstring_view{} : path.substr(0, last + 1);
}

std::wstring_view FileNamePart(std::wstring_view path) {
    return path.substr(FolderPart(path).size());
}

std::wstring_view ExtensionPart(std::wstring_view path) {
    const std::wstring_view name = FileNamePart(path);
    const std::size_t dot = name.rfind(L'.');
    return dot == std::wstring_view::npos ? std::wstring_view{} : name.substr(dot);
}

std::wstring NumberedName(std::wstring_view path, std::uint64_t number) {
    const std::wstring_view extension = ExtensionPart(path);
    std::wstring digits = std::to_wstring(number);
    if (digits.size() < 3) {
        digits.insert(0, 3 - digits.size(), L'0');
    }
    std::wstring result(path.substr(0, path.size() - extension.size()));
    result += L" #" + digits;
    result += extension;
    return result;
}

bool IsNumberedName(std::wstring_view name) {
    constexpr std::size_t kFewestDigits = 3;
    const std::wstring_view base = name.substr(0, name.size() - ExtensionPart(name).size());
    const std::size_t digits = base.size() - (base.find_last_not_of(L"0123456789") + 1);
    return digits >= kFewestDigits && base.substr(0, base.size() - digits).ends_with(L" #");
}

std::wstring ExtendedPath(std::wstring_view path) {
    if (path.starts_with(L"\\\\?\\") || path.starts_with(L"\\\\.\\")) {
        return std::wstring(path);
    }
    if (StartsWithTwoSeparators(path)) {
        // ".." never climbs out of the share.
        return Joined(L"\\\\?\\UNC\\", ResolvedComponents(path.substr(2), 2));
    }
    const bool bareDrive = path.size() == 2 && path[1] == L':';
    const bool absolute = path.size() >= 3 && path[1] == L':' && IsSeparator(path[2]);
    if (!(bareDrive || absolute) || !IsDriveLetter(path[0])) {
        return std::wstring(path);
    }
    std::wstring prefix = L"\\\\?\\";
    prefix += path.substr(0, 2);
    return Joined(prefix + L"\\", ResolvedComponents(path.substr(2), 0));
}
