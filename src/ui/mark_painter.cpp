#include "ui/mark_painter.h"

#include "ui/bitmap_info.h"

namespace {

// The pixel of a canvas over an opaque ground.
std::uint32_t Over(std::uint32_t pixel, TColour ground) {
    const std::uint32_t rest = 255 - (pixel >> 24);
    const auto channel = [&](int shift, std::uint8_t below) {
        return (((pixel >> shift) & 0xFF) + below * rest / 255) << shift;
    };
    return channel(16, ground.red) | channel(8, ground.green) | channel(0, ground.blue);
}

}  // namespace

void PaintMark(HDC context, const RECT& area, TMark mark, TScale scale, TColour ground) {
    const TIconCanvas canvas = DrawMark(mark, scale(kMarkSize));
    std::vector<std::uint32_t> pixels = canvas.Pixels();
    for (std::uint32_t& pixel : pixels) {
        pixel = Over(pixel, ground);
    }
    const BITMAPINFO info = BitmapInfoOf(canvas);
    const int left = area.left + (area.right - area.left - canvas.Size()) / 2;
    const int top = area.top + (area.bottom - area.top - canvas.Size()) / 2;
    StretchDIBits(context, left, top, canvas.Size(), canvas.Size(), 0, 0, canvas.Size(), canvas.Size(),
                  pixels.data(), &info, DIB_RGB_COLORS, SRCCOPY);
}
