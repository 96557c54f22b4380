// Ways in which a file can be damaged.
#pragma once

#include <functional>
#include <string>

// Calls `check` with the bytes cut at every length, and with every byte changed in several ways.
inline void ForEachDamage(const std::string& bytes, const std::function<void(const std::string&)>& check) {
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        check(bytes.substr(0, length));
    }
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        for (const int change : {0x01, 0x02, 0x40, 0x80, 0xFF}) {
            std::string damaged = bytes;
            damaged[index] = static_cast<char>(damaged[index] ^ change);
            check(damaged);
        }
    }
}
