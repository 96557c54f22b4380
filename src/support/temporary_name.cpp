#include "support/temporary_name.h"

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <mutex>
#include <set>

namespace {

// File servers are set up to refuse what looks like a temporary file ("~*", "*.tmp"): these names do not. All
// but the digits is fixed, so that nobody else's file is taken for one.
constexpr std::wstring_view kPrefix = L"vardeko-";
constexpr std::wstring_view kSuffix = L".vardeko";
// How earlier versions called them.
constexpr std::wstring_view kEarlierPrefix = L"~vardeko-";
constexpr std::wstring_view kEarlierSuffix = L".tmp";

std::mutex namesLock;
std::set<std::wstring, std::less<>>& NamesInUse() {
    static std::set<std::wstring, std::less<>> names;
    return names;
}

// A process number may come again after a restart, with the same start time it does not.
const std::wstring& ProcessPart() {
    static const std::wstring part = [] {
        FILETIME created{};
        FILETIME unused{};
        GetProcessTimes(GetCurrentProcess(), &created, &unused, &unused, &unused);
        return std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(created.dwHighDateTime) +
               L"-" + std::to_wstring(created.dwLowDateTime) + L"-";
    }();
    return part;
}

std::atomic<std::uint64_t> namesMade = 0;

bool HasDigitsBetween(std::wstring_view name, std::wstring_view prefix, std::wstring_view suffix) {
    return name.size() > prefix.size() + suffix.size() && name.starts_with(prefix) &&
           name.ends_with(suffix) &&
           name.substr(prefix.size(), name.size() - prefix.size() - suffix.size())
                   .find_first_not_of(L"0123456789-") == std::wstring_view::npos;
}

}  // namespace

TTemporaryName::TTemporaryName()
    : text_(std::wstring(kPrefix) + ProcessPart() + std::to_wstring(++namesMade) + std::wstring(kSuffix)) {
    const std::scoped_lock lock(namesLock);
    NamesInUse().insert(text_);
}

TTemporaryName::~TTemporaryName() {
    const std::scoped_lock lock(namesLock);
    NamesInUse().erase(text_);
}

bool IsTemporaryName(std::wstring_view name) {
    return HasDigitsBetween(name, kPrefix, kSuffix) || HasDigitsBetween(name, kEarlierPrefix, kEarlierSuffix);
}

bool IsLeftOverTemporaryName(std::wstring_view name) {
    if (!IsTemporaryName(name)) {
        return false;
    }
    const std::scoped_lock lock(namesLock);
    return !NamesInUse().contains(name);
}
