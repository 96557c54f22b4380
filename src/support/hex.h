// Bytes as upper-case hexadecimal text: two digits per byte, first byte first, high nibble first. Both
// directions go over all digits without a branch, so that the compiler can take many at a time: loading and
// saving a table of millions of files is mostly this.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <type_traits>

// Writes 2 * bytes.size() digits from `text` on.
template <typename Character>
void WriteHex(std::span<const std::uint8_t> bytes, Character* text) {
    const auto digit = [](unsigned nibble) {
        return static_cast<Character>(nibble + '0' + (nibble > 9 ? 'A' - '0' - 10 : 0));
    };
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        text[2 * index] = digit(bytes[index] >> 4);
        text[2 * index + 1] = digit(bytes[index] & 15);
    }
}

// Reads text of exactly 2 * bytes.size() digits; false, with unspecified bytes, for any other text.
template <typename Character>
[[nodiscard]] bool ReadHex(std::basic_string_view<Character> text, std::span<std::uint8_t> bytes) {
    if (text.size() != 2 * bytes.size()) {
        return false;
    }
    std::uint8_t allValid = 1;
    const auto value = [&allValid](Character digit) {
        // A negative number is a large one here.
        using TUnsigned = std::make_unsigned_t<Character>;
        const auto number = static_cast<TUnsigned>(digit - Character('0'));
        const auto letter = static_cast<TUnsigned>(digit - Character('A'));
        allValid &= static_cast<std::uint8_t>((number < 10) | (letter < 6));
        return static_cast<std::uint8_t>(number < 10 ? number : letter + 10);
    };
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        const std::uint8_t high = value(text[2 * index]);
        bytes[index] = static_cast<std::uint8_t>(high << 4 | value(text[2 * index + 1]));
    }
    return allValid != 0;
}
