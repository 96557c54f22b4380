#include "support/path_digest.h"

#include "support/hex.h"

std::string ToPathHashText(const TPathDigest& digest) {
    std::string text(kPathHashLength, '0');
    WriteHex(digest.bytes, text.data());
    return text;
}

std::optional<TPathDigest> FromPathHashText(std::string_view text) {
    TPathDigest digest;
    if (!ReadHex(text, digest.bytes)) {
        return std::nullopt;
    }
    return digest;
}
