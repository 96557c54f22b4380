// What the fuzz targets share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

inline std::string_view AsBytes(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

// The bytes as a text of Latin-1 letters, which reaches every character that these parsers look at.
inline std::wstring AsText(const std::uint8_t* data, std::size_t size) {
    return {data, data + size};
}

// Stops the fuzzer when what must hold does not.
inline void Require(bool holds) {
    if (!holds) {
        std::abort();
    }
}
