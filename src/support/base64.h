// Bytes as Base64 text (RFC 4648): padded with "=", without line breaks.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

enum class TBase64Alphabet {
    Standard,  // with "+" and "/"
    UrlSafe,   // with "-" and "_" in their places
};

std::wstring Base64Encode(std::span<const std::uint8_t> bytes, TBase64Alphabet alphabet);

// The bytes of a text as Base64Encode writes it; nothing for any other text. Strict, so that one text only
// stands for any bytes: no white space, no missing padding, no bits set that stand for nothing.
std::optional<std::vector<std::uint8_t>> Base64Decode(std::wstring_view text, TBase64Alphabet alphabet);
