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
    for (const TRowStyle& style : {InfoStyle, FileNameStyle, ErrorStyle, IgnoreStyle}) {
        for (const TColour text : {style.text, style.reason}) {
            EXPECT_GE(Contrast(text, style.ground), 4.5) << std::hex << ToColorRef(text);
        }
    }
    // A selected row's text stands on the selection, an error's keeps its own ground there.
    for (const TRowStyle& style : {InfoStyle, FileNameStyle, IgnoreStyle}) {
        for (const TColour text : {style.text, style.reason}) {
            EXPECT_GE(Contrast(text, Theme::Selection), 4.5);
            EXPECT_GE(Contrast(text, Theme::SelectionIdle), 4.5);
        }
    }
}

TEST(Theme, TextOfWindowsCanBeReadInEveryState) {
    for (const TColour ground :
         {Theme::WindowGround, Theme::ControlGround, Theme::AlternateGround, Theme::HeaderGround,
          Theme::Hover, Theme::Pressed, Theme::Checked, Theme::Selection}) {
        EXPECT_GE(Contrast(Theme::Text, ground), 4.5);
    }
    EXPECT_GE(Contrast(Theme::DimText, Theme::WindowGround), 4.5);
    EXPECT_GE(Contrast(Theme::DimText, Theme::ControlGround), 4.5);
    // Parts that are not text need 3:1.
    EXPECT_GE(Contrast(Theme::Accent, Theme::WindowGround), 3.0);
    EXPECT_GE(Contrast(Theme::Accent, Theme::ControlGround), 3.0);
    for (const TColour ground :
         {Theme::WindowGround, Theme::ControlGround, Theme::HeaderGround, Theme::Hover}) {
        EXPECT_GE(Contrast(Theme::ControlBorder, ground), 3.0);
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
