// Removes secrets from memory that the program owns.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

// Empties the text and overwrites what it held, spare capacity included.
inline void WipeText(std::wstring& text) {
    text.resize(text.capacity());
    SecureZeroMemory(text.data(), text.size() * sizeof(wchar_t));
    text.clear();
}

inline void WipeBytes(std::vector<std::uint8_t>& bytes) {
    SecureZeroMemory(bytes.data(), bytes.size());
    bytes.clear();
}
