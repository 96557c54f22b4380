#include "engine/run_log_name.h"

#include <algorithm>
#include <optional>

namespace {

// Digits stand where there is a 0.
constexpr std::wstring_view kPattern = L"0000-00-00 00-00-00.txt";

std::wstring Digits(int number, std::size_t count) {
    std::wstring digits = std::to_wstring(number);
    return std::wstring(count - std::min(count, digits.size()), L'0') + digits;
}

bool IsDigit(wchar_t letter) {
    return letter >= L'0' && letter <= L'9';
}

int NumberIn(std::wstring_view digits) {
    int number = 0;
    for (const wchar_t digit : digits) {
        number = number * 10 + (digit - L'0');
    }
    return number;
}

}  // namespace

std::wstring RunLogName(TDateTime start) {
    const TCalendarTime time = ToCalendarTime(start);
    return Digits(time.year, 4) + L"-" + Digits(time.month, 2) + L"-" + Digits(time.day, 2) + L" " +
           Digits(time.hour, 2) + L"-" + Digits(time.minute, 2) + L"-" + Digits(time.second, 2) + L".txt";
}

bool IsRunLogName(std::wstring_view name) {
    if (!std::ranges::equal(name, kPattern, [](wchar_t letter, wchar_t pattern) {
            return pattern == L'0' ? IsDigit(letter) : letter == pattern;
        })) {
        return false;
    }
    const auto part = [&](std::size_t place) { return NumberIn(name.substr(place, 2)); };
    return ToDateTime({NumberIn(name.substr(0, 4)), part(5), part(8), part(11), part(14), part(17)}) !=
           TDateTime{};
}

std::vector<std::wstring> SuperfluousRunLogs(std::vector<std::wstring> names, std::size_t kept) {
    std::erase_if(names, [](const std::wstring& name) { return !IsRunLogName(name); });
    std::ranges::sort(names);
    names.resize(names.size() - std::min(kept, names.size()));
    return names;
}
