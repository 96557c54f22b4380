#include "support/path_digest.h"

// Both directions go over all characters without a branch, so that the compiler can take many at a time:
// loading and saving a table of millions of files is mostly this.

std::string ToPathHashText(const TPathDigest& digest) {
    std::string text(kPathHashLength, '\0');
    WritePathHashText(digest, text.data());
    return text;
}

void WritePathHashText(const TPathDigest& digest, char* text) {
    const auto digit = [](unsigned nibble) {
        return static_cast<char>(nibble + '0' + (nibble > 9 ? 'A' - '0' - 10 : 0));
    };
    for (std::size_t index = 0; index < digest.bytes.size(); ++index) {
        text[2 * index] = digit(digest.bytes[index] >> 4);
        text[2 * index + 1] = digit(digest.bytes[index] & 15);
    }
}

std::optional<TPathDigest> FromPathHashText(std::string_view text) {
    if (text.size() != kPathHashLength) {
        return std::nullopt;
    }
    std::array<std::uint8_t, kPathHashLength> nibbles;
    std::uint8_t allValid = 1;
    for (std::size_t index = 0; index < kPathHashLength; ++index) {
        const auto number = static_cast<std::uint8_t>(text[index] - '0');
        const auto letter = static_cast<std::uint8_t>(text[index] - 'A');
        const bool isNumber = number < 10;
        const bool isLetter = letter < 6;
        nibbles[index] = isNumber ? number : static_cast<std::uint8_t>(letter + 10);
        allValid &= static_cast<std::uint8_t>(isNumber | isLetter);
    }
    if (!allValid) {
        return std::nullopt;
    }
    TPathDigest digest;
    for (std::size_t index = 0; index < digest.bytes.size(); ++index) {
        digest.bytes[index] = static_cast<std::uint8_t>(nibbles[2 * index] << 4 | nibbles[2 * index + 1]);
    }
    return digest;
}
