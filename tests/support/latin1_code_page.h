// A code page for tests that is the same on every machine.
#pragma once

#include "support/text.h"

// ISO 8859-1: holds the characters up to U+00FF.
class TLatin1CodePage : public TCodePage {
public:
    std::optional<std::string> Encode(std::wstring_view text) const override {
        std::string bytes;
        for (const wchar_t letter : text) {
            if (static_cast<unsigned long>(letter) > 0xFF) {
                return std::nullopt;
            }
            bytes += static_cast<char>(static_cast<unsigned char>(letter));
        }
        return bytes;
    }
    std::wstring Decode(std::string_view bytes) const override {
        std::wstring text;
        for (const char byte : bytes) {
            text += static_cast<wchar_t>(static_cast<unsigned char>(byte));
        }
        return text;
    }
};
