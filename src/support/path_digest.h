// The SHA-256 of a file's path, the key of the hash table.
#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

struct TPathDigest {
    std::array<std::uint8_t, 32> bytes{};

    friend auto operator<=>(const TPathDigest&, const TPathDigest&) = default;
};

inline constexpr std::size_t kPathHashLength = 64;

// The digest as 64 upper-case hexadecimal characters, first byte first, high nibble first.
std::string ToPathHashText(const TPathDigest& digest);

// Writes the same 64 characters to `text`, without a terminator.
void WritePathHashText(const TPathDigest& digest, char* text);

// The digest of such a text; nothing for any other text, lower-case digits included.
std::optional<TPathDigest> FromPathHashText(std::string_view text);
