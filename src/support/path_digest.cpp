#include "support/path_digest.h"

#include "support/hex.h"

std::string ToPathHashText(const TPathDigest& digest) {
    std::string text(kPathHashLength, '\0');
    WritePathHashText(digest, text.data());
    return text;
}

void WritePathHashText(const TPathDigest& digest, char* text) {
    WriteHex(digest.bytes, text);
}

std::optional<TPathDigest> FromPathHashText(std::string_view text) {
    TPathDigest digest;
    if (!ReadHex(text, digest.bytes)) {
        return std::nullopt;
    }
    return digest;
}
