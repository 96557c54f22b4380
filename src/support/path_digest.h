// The SHA-256 of a file's path, the key of the hash table.
#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

struct TPathDigest {
    std::array<std::uint8_t, 32> bytes{};

    friend auto operator<=>(const TPathDigest&, const TPathDigest&) = default;
    // In whole words and without a call, because every look-up in the hash table ends with it.
    friend bool operator==(const TPathDigest& left, const TPathDigest& right) {
        const auto difference = [&left, &right](std::size_t at) {
            std::uint64_t ours = 0;
            std::uint64_t theirs = 0;
            std::memcpy(&ours, left.bytes.data() + at, sizeof ours);
            std::memcpy(&theirs, right.bytes.data() + at, sizeof theirs);
            return ours ^ theirs;
        };
        return (difference(0) | difference(8) | difference(16) | difference(24)) == 0;
    }
};

inline constexpr std::size_t kPathHashLength = 64;

// The digest as 64 upper-case hexadecimal characters, first byte first, high nibble first.
std::string ToPathHashText(const TPathDigest& digest);

// Writes the same 64 characters to `text`, without a terminator.
void WritePathHashText(const TPathDigest& digest, char* text);

// The digest of such a text; nothing for any other text, lower-case digits included.
std::optional<TPathDigest> FromPathHashText(std::string_view text);
