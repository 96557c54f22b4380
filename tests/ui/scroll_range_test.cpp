#include "ui/scroll_range.h"

#include <gtest/gtest.h>

namespace {

TEST(ScrollRange, ADraggedThumbComesToRestWhereItIsShown) {
    for (const int length : {101, 220, 5000, 2'000'000}) {
        const TScrollRange range{length, 100, 0};
        for (const int track : {100, 20, 3}) {
            const TScrollThumb thumb = range.Thumb(track, 16);
            EXPECT_EQ(thumb.top, 0);
            EXPECT_GE(thumb.bottom, std::min(track, 16));
            for (int top = 0; top <= track - thumb.bottom; ++top) {
                const TScrollRange dragged{length, 100, range.PositionOf(top, track, 16)};
                // Few positions in a long way: the thumb snaps to the nearest.
                EXPECT_NEAR(dragged.Thumb(track, 16).top, top, 1 + track / (2 * dragged.End())) << length;
            }
            EXPECT_EQ(range.PositionOf(track + 500, track, 16), thumb.bottom < track ? range.End() : 0);
            EXPECT_EQ(range.PositionOf(-5, track, 16), 0);
        }
    }
    EXPECT_EQ((TScrollRange{220, 100, 120}.Thumb(100, 16).bottom), 100);
    EXPECT_EQ((TScrollRange{40, 100, 0}.End()), 0);
}

}  // namespace
