// The program's look: every colour of it is named here and nowhere else.
#pragma once

#include <cstdint>

// A colour; red, green and blue from 0 to 255.
struct TColour {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;

    friend bool operator==(const TColour&, const TColour&) = default;
};

// A colour as GDI's COLORREF: 0x00BBGGRR.
constexpr std::uint32_t ToColorRef(TColour colour) {
    return static_cast<std::uint32_t>(colour.red) | (static_cast<std::uint32_t>(colour.green) << 8) |
           (static_cast<std::uint32_t>(colour.blue) << 16);
}

// How a row of the status list is coloured: its text, the reason behind the text, and what lies behind both.
struct TRowStyle {
    TColour text;
    TColour reason;
    TColour ground;
};

// One dark palette for all windows.
namespace Theme {

inline constexpr TColour WindowGround{0x1E, 0x20, 0x24};   // windows, tool bars, status bar
inline constexpr TColour ControlGround{0x14, 0x15, 0x18};  // lists, grids, fields
inline constexpr TColour HeaderGround{0x26, 0x29, 0x2E};   // column headers, caption rows
inline constexpr TColour Border{0x3A, 0x3F, 0x47};
inline constexpr TColour AlternateGround{0x1A, 0x1C, 0x20};  // of every second row of a grid
inline constexpr TColour ControlBorder{0x78, 0x7F, 0x89};    // of what can be used: fields, buttons
inline constexpr TColour Text{0xE8, 0xEA, 0xED};
inline constexpr TColour DimText{0xA3, 0xAB, 0xB5};       // labels, hints
inline constexpr TColour DisabledText{0x6B, 0x72, 0x7C};  // what cannot be used now
inline constexpr TColour Accent{0x4D, 0xA3, 0xFF};        // focus, progress, what is switched on
inline constexpr TColour Warning{0xFB, 0xFB, 0x00};       // the mark of a row with which something is wrong
inline constexpr TColour Hover{0x2E, 0x32, 0x39};
inline constexpr TColour Pressed{0x3A, 0x40, 0x49};
inline constexpr TColour Checked{0x1F, 0x38, 0x52};        // a button that stays down
inline constexpr TColour Selection{0x1F, 0x43, 0x68};      // selected rows while their list has the focus
inline constexpr TColour SelectionIdle{0x2F, 0x33, 0x3A};  // and while it has not
inline constexpr TColour ScrollTrack{0x1A, 0x1C, 0x1F};
inline constexpr TColour ScrollThumb{0x4A, 0x50, 0x59};
inline constexpr TColour ErrorMark{0xFF, 0x5C, 0x5C};  // where errors are, beside the scroll bar
inline constexpr TColour ScrollThumbHover{0x66, 0x6E, 0x79};

// The red of the errors reaches a contrast of 4.07:1 on pure black, the darkest ground there is, so no
// dark ground is enough for it: an error's text stands on a light one.
inline constexpr TColour ErrorGround{0xFF, 0xF1, 0xF1};

// Why something went wrong, beside a row's text: a tone without its colour.
inline constexpr TColour ReasonText{0xB4, 0xBB, 0xC4};
inline constexpr TColour ErrorReasonText{0x7A, 0x5A, 0x5A};

}  // namespace Theme

// The styles of the status list.
inline constexpr TRowStyle InfoStyle{{0xFB, 0xFB, 0x00}, Theme::ReasonText, Theme::ControlGround};
inline constexpr TRowStyle FileNameStyle{{0x80, 0xFF, 0x00}, Theme::ReasonText, Theme::ControlGround};
inline constexpr TRowStyle ErrorStyle{{0xDD, 0x00, 0x00}, Theme::ErrorReasonText, Theme::ErrorGround};
inline constexpr TRowStyle IgnoreStyle{{0xCF, 0xCF, 0xCF}, Theme::ReasonText, Theme::ControlGround};
