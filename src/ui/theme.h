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

// One palette for all windows; without other values the dark one.
struct TTheme {
    bool isHighContrast = false;

    TColour windowGround{0x1E, 0x20, 0x24};   // windows, tool bars, status bar
    TColour controlGround{0x14, 0x15, 0x18};  // lists, grids, fields
    TColour headerGround{0x26, 0x29, 0x2E};   // column headers, caption rows
    TColour border{0x3A, 0x3F, 0x47};
    TColour alternateGround{0x1A, 0x1C, 0x20};  // of every second row of a grid
    TColour controlBorder{0x78, 0x7F, 0x89};    // of what can be used: fields, buttons
    TColour text{0xE8, 0xEA, 0xED};
    TColour dimText{0xA3, 0xAB, 0xB5};       // labels, hints
    TColour disabledText{0x6B, 0x72, 0x7C};  // what cannot be used now
    TColour accent{0x4D, 0xA3, 0xFF};        // focus, progress
    TColour mark{0x4D, 0xA3, 0xFF};          // what is switched on
    TColour warning{0xFB, 0xFB, 0x00};       // the mark of a row with which something is wrong
    TColour hover{0x2E, 0x32, 0x39};
    TColour pressed{0x3A, 0x40, 0x49};
    TColour checked{0x1F, 0x38, 0x52};        // a button that stays down
    TColour selection{0x1F, 0x43, 0x68};      // selected rows while their list has the focus
    TColour selectionIdle{0x2F, 0x33, 0x3A};  // and while it has not
    TColour selectionText{0xE8, 0xEA, 0xED};  // on both
    TColour selectionFocus{0x4D, 0xA3, 0xFF};
    TColour scrollTrack{0x1A, 0x1C, 0x1F};
    TColour scrollThumb{0x4A, 0x50, 0x59};
    TColour scrollThumbHover{0x66, 0x6E, 0x79};
    TColour errorMark{0xFF, 0x5C, 0x5C};  // where errors are, beside the scroll bar

    // The lines of icons.
    TColour icon{0xD7, 0xDB, 0xE0};
    TColour iconAccent{0x4D, 0xB8, 0xFF};
    TColour iconStop{0xFF, 0x6B, 0x6B};
    TColour iconWarning{0xFF, 0xC1, 0x45};

    // The status list's rows. The reason, beside a row's text, is a tone without its colour. The red of the
    // errors reaches a contrast of 4.07:1 on pure black, the darkest ground there is, so no dark ground is
    // enough for it: an error's text stands on a light one.
    TRowStyle infoRow{{0xFB, 0xFB, 0x00}, {0xB4, 0xBB, 0xC4}, {0x14, 0x15, 0x18}};
    TRowStyle fileNameRow{{0x80, 0xFF, 0x00}, {0xB4, 0xBB, 0xC4}, {0x14, 0x15, 0x18}};
    TRowStyle errorRow{{0xDD, 0x00, 0x00}, {0x7A, 0x5A, 0x5A}, {0xFF, 0xF1, 0xF1}};
    TRowStyle ignoreRow{{0xCF, 0xCF, 0xCF}, {0xB4, 0xBB, 0xC4}, {0x14, 0x15, 0x18}};
};

// The colours that a user who needs high contrast has chosen. The system's settings see to it that each text
// can be read on its ground, and on no other.
struct TSystemColours {
    TColour window;
    TColour windowText;
    TColour selection;
    TColour selectionText;
    TColour disabledText;  // on the ground of windows
};

// The palette of these colours and no others.
TTheme HighContrastTheme(const TSystemColours& colours);

// The palette in use; only the thread of the windows asks for it and changes it.
const TTheme& Theme();
void UseTheme(const TTheme& theme);
