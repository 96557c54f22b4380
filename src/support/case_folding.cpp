#include "support/case_folding.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>

namespace {

using TUpperCaseTable = std::array<wchar_t, 0x10000>;

// One call for all units: a surrogate stands alone here and maps to itself.
std::unique_ptr<TUpperCaseTable> MakeUpperCaseTable() {
    auto units = std::make_unique<TUpperCaseTable>();
    for (std::size_t unit = 0; unit < units->size(); ++unit) {
        (*units)[unit] = static_cast<wchar_t>(unit);
    }
    auto table = std::make_unique<TUpperCaseTable>(*units);
    LCMapStringEx(LOCALE_NAME_INVARIANT, LCMAP_UPPERCASE, units->data(), static_cast<int>(units->size()),
                  table->data(), static_cast<int>(table->size()), nullptr, nullptr, 0);
    return table;
}

const TUpperCaseTable& UpperCaseTable() {
    static const std::unique_ptr<TUpperCaseTable> table = MakeUpperCaseTable();
    return *table;
}

}  // namespace

wchar_t UpperCaseOf(wchar_t letter) {
    return UpperCaseTable()[static_cast<std::uint16_t>(letter)];
}

std::wstring FoldedCase(std::wstring_view text) {
    const TUpperCaseTable& table = UpperCaseTable();
    std::wstring folded(text);
    for (wchar_t& letter : folded) {
        letter = table[static_cast<std::uint16_t>(letter)];
    }
    return folded;
}

std::wstring NameKey(std::wstring_view name) {
    const bool isAscii = std::ranges::all_of(name, [](wchar_t letter) { return letter < 0x80; });
    // The most that a character grows by.
    std::wstring composed(isAscii ? 0 : 3 * name.size(), L'\0');
    const int length = isAscii ? 0
                               : NormalizeString(NormalizationC, name.data(), static_cast<int>(name.size()),
                                                 composed.data(), static_cast<int>(composed.size()));
    // Refused is what is no text, such as half a surrogate pair.
    return FoldedCase(length > 0 ? std::wstring_view(composed).substr(0, static_cast<std::size_t>(length))
                                 : name);
}

std::wstring LocaleUpperCase(std::wstring_view text) {
    std::wstring upper(text);
    CharUpperBuffW(upper.data(), static_cast<DWORD>(upper.size()));
    return upper;
}
