// The arithmetic of scroll bars.
#pragma once

#include <algorithm>
#include <cmath>

// Where a thumb stands in its track, in pixels; the bottom lies outside.
struct TScrollThumb {
    int top = 0;
    int bottom = 0;

    bool Contains(int y) const { return y >= top && y < bottom; }
};

// What a scroll bar shows, in units of its owner (rows or pixels).
struct TScrollRange {
    int length = 0;    // of everything
    int page = 0;      // of what is seen at once
    int position = 0;  // the first unit seen

    int End() const { return std::max(0, length - page); }

    // The thumb in a track of that many pixels, at least `least` high where there is room.
    TScrollThumb Thumb(int track, int least) const {
        const double share = static_cast<double>(page) / std::max(1, length);
        const int height = std::min(track, std::max(least, static_cast<int>(track * share)));
        const double scrolled = static_cast<double>(position) / std::max(1, End());
        const int top = static_cast<int>((track - height) * std::min(1.0, scrolled));
        return {top, top + height};
    }

    // The position that brings the thumb's top there, or as near as it can get.
    int PositionOf(int thumbTop, int track, int least) const {
        const TScrollThumb thumb = Thumb(track, least);
        const double way = track - (thumb.bottom - thumb.top);
        return way > 0 ? static_cast<int>(std::lround(std::clamp(thumbTop / way, 0.0, 1.0) * End()))
                       : position;
    }

    friend bool operator==(const TScrollRange&, const TScrollRange&) = default;
};
