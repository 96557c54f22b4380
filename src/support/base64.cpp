#include "support/base64.h"

#include <algorithm>
#include <cstddef>

namespace {

constexpr wchar_t kPadding = L'=';
constexpr std::uint32_t kNoDigit = 64;

constexpr std::wstring_view DigitsOf(TBase64Alphabet alphabet) {
    return alphabet == TBase64Alphabet::Standard
               ? L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"
               : L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
}

std::uint32_t DigitValue(wchar_t digit, std::wstring_view digits) {
    return static_cast<std::uint32_t>(std::min<std::size_t>(digits.find(digit), kNoDigit));
}

}  // namespace

std::wstring Base64Encode(std::span<const std::uint8_t> bytes, TBase64Alphabet alphabet) {
    const std::wstring_view digits = DigitsOf(alphabet);
    std::wstring text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (; !bytes.empty(); bytes = bytes.subspan(std::min<std::size_t>(bytes.size(), 3))) {
        const std::size_t taken = std::min<std::size_t>(bytes.size(), 3);
        std::uint32_t group = static_cast<std::uint32_t>(bytes[0]) << 16;
        group |= taken > 1 ? static_cast<std::uint32_t>(bytes[1]) << 8 : 0;
        group |= taken > 2 ? bytes[2] : 0;
        text += digits[group >> 18];
        text += digits[(group >> 12) & 63];
        text += taken > 1 ? digits[(group >> 6) & 63] : kPadding;
        text += taken > 2 ? digits[group & 63] : kPadding;
    }
    return text;
}

std::optional<std::vector<std::uint8_t>> Base64Decode(std::wstring_view text, TBase64Alphabet alphabet) {
    if (text.size() % 4 != 0) {
        return std::nullopt;
    }
    const std::wstring_view digits = DigitsOf(alphabet);
    std::vector<std::uint8_t> bytes;
    bytes.reserve(text.size() / 4 * 3);
    for (; !text.empty(); text.remove_prefix(4)) {
        // Only the last group may be short: 2 digits for 1 byte, 3 for 2.
        std::size_t digitCount = 4;
        while (text.size() == 4 && digitCount > 2 && text[digitCount - 1] == kPadding) {
            --digitCount;
        }
        std::uint32_t group = 0;
        for (std::size_t index = 0; index < 4; ++index) {
            const std::uint32_t value = index < digitCount ? DigitValue(text[index], digits) : 0;
            if (value == kNoDigit) {
                return std::nullopt;
            }
            group = group << 6 | value;
        }
        const std::size_t byteCount = digitCount - 1;
        for (std::size_t index = 0; index < byteCount; ++index) {
            bytes.push_back(static_cast<std::uint8_t>(group >> (16 - 8 * index)));
        }
        const std::uint32_t unusedBits = 0xFFFFFFu >> (8 * byteCount);
        if ((group & unusedBits) != 0) {
            return std::nullopt;
        }
    }
    return bytes;
}
