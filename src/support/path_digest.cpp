#include "support/path_digest.h"

namespace {

constexpr std::string_view kDigits = "0123456789ABCDEF";

// The value of an upper-case hexadecimal digit, or 16 for anything else.
unsigned DigitValue(char digit) {
    if (digit >= '0' && digit <= '9') {
        return static_cast<unsigned>(digit - '0');
    }
    return digit >= 'A' && digit <= 'F' ? static_cast<unsigned>(digit - 'A') + 10 : 16;
}

}  // namespace

std::string ToPathHashText(const TPathDigest& digest) {
    std::string text;
    text.reserve(kPathHashLength);
    for (const std::uint8_t byte : digest.bytes) {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}

std::optional<TPathDigest> FromPathHashText(std::string_view text) {
    if (text.size() != kPathHashLength) {
        return std::nullopt;
    }
    TPathDigest digest;
    for (std::size_t index = 0; index < digest.bytes.size(); ++index) {
        const unsigned high = DigitValue(text[2 * index]);
        const unsigned low = DigitValue(text[2 * index + 1]);
        if (high > 15 || low > 15) {
            return std::nullopt;
        }
        digest.bytes[index] = static_cast<std::uint8_t>(high << 4 | low);
    }
    return digest;
}
