#include "support/temporary_name.h"

#include <windows.h>

namespace {

constexpr std::wstring_view kPrefix = L"~vardeko-";
constexpr std::wstring_view kSuffix = L".tmp";

}  // namespace

const std::wstring& OwnTemporaryName() {
    // A process number may come again after a restart, with the same start time it does not.
    static const std::wstring name = [] {
        FILETIME created{};
        FILETIME unused{};
        GetProcessTimes(GetCurrentProcess(), &created, &unused, &unused, &unused);
        return std::wstring(kPrefix) + std::to_wstring(GetCurrentProcessId()) + L"-" +
               std::to_wstring(created.dwHighDateTime) + L"-" + std::to_wstring(created.dwLowDateTime) +
               std::wstring(kSuffix);
    }();
    return name;
}

bool IsTemporaryName(std::wstring_view name) {
    if (!name.starts_with(kPrefix) || !name.ends_with(kSuffix) ||
        name.size() <= kPrefix.size() + kSuffix.size()) {
        return false;
    }
    const std::wstring_view middle =
        name.substr(kPrefix.size(), name.size() - kPrefix.size() - kSuffix.size());
    return middle.find_first_not_of(L"0123456789-") == std::wstring_view::npos;
}

bool IsLeftOverTemporaryName(std::wstring_view name) {
    return IsTemporaryName(name) && name != OwnTemporaryName();
}
