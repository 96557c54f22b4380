#include "support/typed_folder.h"

#include <algorithm>

#include "support/path_text.h"
#include "support/text.h"

namespace {

constexpr std::wstring_view kExtended = L"\\\\?\\";
constexpr std::wstring_view kExtendedShare = L"\\\\?\\UNC\\";

std::wstring_view WithoutQuotes(std::wstring_view text) {
    text = TrimWhiteSpace(text);
    while (text.starts_with(L'"')) {
        text.remove_prefix(1);
    }
    while (text.ends_with(L'"')) {
        text.remove_suffix(1);
    }
    return TrimWhiteSpace(text);
}

bool StartsWithPrefix(std::wstring_view path, std::wstring_view prefix) {
    return EqualsIgnoringAsciiCase(path.substr(0, prefix.size()), prefix);
}

// The path in the form that everybody types.
std::wstring Plain(const std::wstring& path) {
    if (StartsWithPrefix(path, kExtendedShare)) {
        return L"\\\\" + path.substr(kExtendedShare.size());
    }
    return path.starts_with(kExtended) ? path.substr(kExtended.size()) : path;
}

}  // namespace

std::wstring FolderAsMeant(std::wstring_view typed) {
    std::wstring path(WithoutQuotes(typed));
    std::ranges::replace(path, L'/', L'\\');
    // The extended form has its separators joined and its dots resolved, and tells what is absolute.
    const std::wstring extended = ExtendedPath(Plain(path));
    if (!extended.starts_with(kExtended)) {
        return {};
    }
    const std::wstring plain(RemoveTrailingSeparator(Plain(extended)));
    return DrivePart(plain).empty() ? std::wstring() : plain;
}
