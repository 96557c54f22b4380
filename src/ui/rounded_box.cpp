#include "ui/rounded_box.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "ui/bitmap_info.h"
#include "ui/device_context.h"

namespace {

std::uint32_t Mixed(TColour below, TColour above, double coverage) {
    const auto channel = [&](std::uint8_t from, std::uint8_t to) {
        return static_cast<std::uint8_t>(std::lround(from + (to - from) * coverage));
    };
    return static_cast<std::uint32_t>(channel(below.red, above.red)) << 16 |
           static_cast<std::uint32_t>(channel(below.green, above.green)) << 8 |
           channel(below.blue, above.blue);
}

TColour ColourOf(std::uint32_t pixel) {
    return {static_cast<std::uint8_t>(pixel >> 16), static_cast<std::uint8_t>(pixel >> 8),
            static_cast<std::uint8_t>(pixel)};
}

// The pixel at a distance from the centre of a corner's arc.
std::uint32_t CornerPixel(const TRoundedBox& box, int radius, double distance) {
    const double inBox = std::clamp(radius - distance + 0.5, 0.0, 1.0);
    const double inGround = std::clamp(radius - box.thickness - distance + 0.5, 0.0, 1.0);
    return Mixed(ColourOf(Mixed(box.outside, box.border, inBox)), box.ground, inGround);
}

// One corner, as large as its radius; mirrored from the left top one.
void PaintCorner(HDC context, POINT leftTop, const TRoundedBox& box, int radius, bool right, bool bottom) {
    std::vector<std::uint32_t> pixels;
    pixels.reserve(static_cast<std::size_t>(radius) * static_cast<std::size_t>(radius));
    for (int y = 0; y < radius; ++y) {
        for (int x = 0; x < radius; ++x) {
            const double across = (right ? x : radius - 1 - x) + 0.5;
            const double down = (bottom ? y : radius - 1 - y) + 0.5;
            pixels.push_back(CornerPixel(box, radius, std::hypot(across, down)));
        }
    }
    const BITMAPINFO info = BitmapInfoOf(radius);
    StretchDIBits(context, leftTop.x, leftTop.y, radius, radius, 0, 0, radius, radius, pixels.data(), &info,
                  DIB_RGB_COLORS, SRCCOPY);
}

}  // namespace

void PaintRoundedBox(HDC context, const RECT& area, const TRoundedBox& box) {
    FillArea(context, area, box.ground);
    FrameArea(context, area, box.border, box.thickness);
    const int radius = std::min<int>({box.radius, static_cast<int>(area.right - area.left) / 2,
                                      static_cast<int>(area.bottom - area.top) / 2});
    if (radius <= 0) {
        return;
    }
    for (const bool right : {false, true}) {
        for (const bool bottom : {false, true}) {
            PaintCorner(context,
                        {right ? area.right - radius : area.left, bottom ? area.bottom - radius : area.top},
                        box, radius, right, bottom);
        }
    }
}
