// The code page in which this system stores single-byte text.
#pragma once

#include "support/text.h"

// The system's ANSI code page. A text counts as held only when it survives the way there and back, so a
// character that the system would replace by a similar one does not.
class TSystemCodePage : public TCodePage {
public:
    std::optional<std::string> Encode(std::wstring_view text) const override;
    std::wstring Decode(std::string_view bytes) const override;
};
