#include "ui/image_list.h"

#include <algorithm>

#include "ui/bitmap_info.h"
#include "ui/device_context.h"

namespace {

TBitmap MakeBitmap(const TIconCanvas& canvas) {
    const BITMAPINFO info = BitmapInfoOf(canvas);
    void* bits = nullptr;
    TBitmap bitmap(CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    if (bitmap) {
        std::copy(canvas.Pixels().begin(), canvas.Pixels().end(), static_cast<std::uint32_t*>(bits));
    }
    return bitmap;
}

}  // namespace

void TImages::SetScale(TScale scale) {
    size_ = scale(kImageSize);
    bitmaps_.clear();
}

HBITMAP TImages::Bitmap(TImageIndex image, TImageState state) {
    TBitmap& bitmap = bitmaps_[{image, state}];
    if (!bitmap) {
        bitmap = MakeBitmap(DrawImage(image, size_, state));
    }
    return bitmap.Get();
}

void TImages::Draw(HDC context, POINT topLeft, TImageIndex image, TImageState state) {
    const TMemoryContext source(context);
    const TSelection selection(source.Get(), Bitmap(image, state));
    const BLENDFUNCTION blend{AC_SRC_OVER, 0, 255, AC_SRC_ALPHA};
    GdiAlphaBlend(context, topLeft.x, topLeft.y, size_, size_, source.Get(), 0, 0, size_, size_, blend);
}
