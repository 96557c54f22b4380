// What controls say of themselves, the same in every window.
#pragma once

#include <cstddef>
#include <string>

namespace UiTexts {

inline constexpr wchar_t UnknownError[] = L"Unbekannter Fehler";
inline constexpr wchar_t Yes[] = L"Ja";
inline constexpr wchar_t No[] = L"Nein";
inline constexpr wchar_t DeleteKey[] = L"Entf";

// A screen reader says these of a cell: what a double click would do, and where the cell stands.
inline constexpr wchar_t EditCell[] = L"Bearbeiten";
inline constexpr wchar_t SwitchOn[] = L"Einschalten";
inline constexpr wchar_t SwitchOff[] = L"Ausschalten";

// `row` counts from 1.
inline std::wstring RowOf(std::size_t row, std::size_t count) {
    return L"Zeile " + std::to_wstring(row) + L" von " + std::to_wstring(count);
}

}  // namespace UiTexts
