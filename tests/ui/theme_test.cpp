#include "ui/theme.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "ui/dpi.h"

namespace {

// Relative luminance and contrast as WCAG 2.1 defines them.
double Luminance(TColour colour) {
    const auto linear = [](std::uint8_t channel) {
        const double value = channel / 255.0;
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.red) + 0.7152 * linear(colour.green) + 0.0722 * linear(colour.blue);
}

double Contrast(TColour left, TColour right) {
    const auto [dark, light] = std::minmax({Luminance(left), Luminance(right)});
    return (light + 0.05) / (dark + 0.05);
}

TEST(Theme, EveryRowCanBeReadOnItsGround) {
    for (const TRowStyle& style :
         {Theme().infoRow, Theme().fileNameRow, Theme().errorRow, Theme().ignoreRow}) {
        for (const TColour text : {style.text, style.reason}) {
            EXPECT_GE(Contrast(text, style.ground), 4.5) << std::hex << ToColorRef(text);
        }
    }
    // A selected row's text stands on the selection, an error's keeps its own ground there.
    for (const TRowStyle& style : {Theme().infoRow, Theme().fileNameRow, Theme().ignoreRow}) {
        for (const TColour text : {style.text, style.reason}) {
            EXPECT_GE(Contrast(text, Theme().selection), 4.5);
            EXPECT_GE(Contrast(text, Theme().selectionIdle), 4.5);
        }
    }
}

TEST(Theme, TextOfWindowsCanBeReadInEveryState) {
    for (const TColour ground :
         {Theme().windowGround, Theme().controlGround, Theme().alternateGround, Theme().headerGround,
          Theme().hover, Theme().pressed, Theme().checked, Theme().selection}) {
        EXPECT_GE(Contrast(Theme().text, ground), 4.5);
    }
    EXPECT_GE(Contrast(Theme().dimText, Theme().windowGround), 4.5);
    EXPECT_GE(Contrast(Theme().dimText, Theme().controlGround), 4.5);
    // Parts that are not text need 3:1.
    EXPECT_GE(Contrast(Theme().accent, Theme().windowGround), 3.0);
    EXPECT_GE(Contrast(Theme().accent, Theme().controlGround), 3.0);
    for (const TColour ground :
         {Theme().windowGround, Theme().controlGround, Theme().headerGround, Theme().hover}) {
        EXPECT_GE(Contrast(Theme().controlBorder, ground), 3.0);
    }
}

// Where each text may stand, in the colours of two contrast themes, a dark and a light one.
TEST(Theme, HighContrastPutsEveryTextOnItsOwnGround) {
    const TSystemColours kThemes[] = {
        {{0x20, 0x20, 0x20}, {0xFF, 0xFF, 0xFF}, {0x8E, 0xE3, 0xF0}, {0x26, 0x3B, 0x50}, {0xA6, 0xA6, 0xA6}},
        {{0xFF, 0xFA, 0xEF}, {0x3D, 0x3D, 0x3D}, {0x90, 0x39, 0x09}, {0xFF, 0xF5, 0xE3}, {0x67, 0x67, 0x67}},
    };
    for (const TSystemColours& colours : kThemes) {
        const TTheme theme = HighContrastTheme(colours);
        for (const TColour ground : {theme.windowGround, theme.controlGround, theme.alternateGround,
                                     theme.headerGround, theme.hover, theme.pressed, theme.checked}) {
            for (const TColour text : {theme.text, theme.dimText, theme.icon, theme.iconAccent,
                                       theme.iconStop, theme.warning, theme.mark}) {
                EXPECT_GE(Contrast(text, ground), 4.5);
            }
            for (const TColour part : {theme.accent, theme.controlBorder, theme.disabledText}) {
                EXPECT_GE(Contrast(part, ground), 4.5);
            }
        }
        for (const TColour ground : {theme.selection, theme.selectionIdle}) {
            EXPECT_GE(Contrast(theme.selectionText, ground), 4.5);
            EXPECT_GE(Contrast(theme.selectionFocus, ground), 4.5);
        }
        for (const TRowStyle& row : {theme.infoRow, theme.fileNameRow, theme.errorRow, theme.ignoreRow}) {
            EXPECT_GE(Contrast(row.text, row.ground), 4.5);
            EXPECT_GE(Contrast(row.reason, row.ground), 4.5);
        }
        EXPECT_NE(theme.errorRow.ground, theme.infoRow.ground);
    }
}

TEST(Scale, RoundsToTheNearestPixel) {
    EXPECT_EQ(TScale(96)(24), 24);
    EXPECT_EQ(TScale(120)(5), 6);  // 6.25
    EXPECT_EQ(TScale(144)(1), 2);  // 1.5
    EXPECT_EQ(TScale(192)(410), 820);
    EXPECT_EQ(TScale(144)(-1), -2);
}

}  // namespace
