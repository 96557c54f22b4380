// Surrogates: the two units that stand for one character above U+FFFF.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Whether wchar_t is such a unit, as on Windows; elsewhere it holds a whole character.
inline constexpr bool kUnitsAreUtf16 = sizeof(wchar_t) == 2;

constexpr bool IsHighSurrogate(char32_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}

constexpr bool IsLowSurrogate(char32_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

// The halves of a character above U+FFFF, and the character of two halves.
constexpr char32_t HighSurrogateOf(char32_t value) {
    return 0xD800 + ((value - 0x10000) >> 10);
}

constexpr char32_t LowSurrogateOf(char32_t value) {
    return 0xDC00 + ((value - 0x10000) & 0x3FF);
}

constexpr char32_t JoinSurrogates(char32_t high, char32_t low) {
    return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}

// The first `length` units of a text, or one less when a character would be cut in two: half of one is shown
// as a box.
constexpr std::wstring_view BeginningOf(std::wstring_view text, std::size_t length) {
    const bool cutsPair =
        length > 0 && length < text.size() && IsHighSurrogate(static_cast<char32_t>(text[length - 1]));
    return text.substr(0, cutsPair ? length - 1 : length);
}
