// Bytes as upper-case hexadecimal text: two digits per byte, first byte first, high nibble first.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

// Writes 2 * bytes.size() digits from `text` on.
template <typename Character>
void WriteHex(std::span<const std::uint8_t> bytes, Character* text) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    for (const std::uint8_t byte : bytes) {
        *text++ = static_cast<Character>(kDigits[byte >> 4]);
        *text++ = static_cast<Character>(kDigits[byte & 15]);
    }
}

// The value of an upper-case hexadecimal digit, or 16 for anything else.
template <typename Character>
constexpr unsigned HexDigitValue(Character digit) {
    if (digit >= Character('0') && digit <= Character('9')) {
        return static_cast<unsigned>(digit - Character('0'));
    }
    const bool isLetter = digit >= Character('A') && digit <= Character('F');
    return isLetter ? static_cast<unsigned>(digit - Character('A')) + 10 : 16;
}

// Reads text of exactly 2 * bytes.size() digits; false, with unspecified bytes, for any other text.
template <typename Character>
[[nodiscard]] bool ReadHex(std::basic_string_view<Character> text, std::span<std::uint8_t> bytes) {
    if (text.size() != 2 * bytes.size()) {
        return false;
    }
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        const unsigned high = HexDigitValue(text[2 * index]);
        const unsigned low = HexDigitValue(text[2 * index + 1]);
        if (high > 15 || low > 15) {
            return false;
        }
        bytes[index] = static_cast<std::uint8_t>(high << 4 | low);
    }
    return true;
}
