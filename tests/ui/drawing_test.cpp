// Icons, shortened paths and the throttle of reports: what is drawn, and how often.
#include <gtest/gtest.h>

#include <set>

#include "ui/icons.h"
#include "ui/report_throttle.h"
#include "ui/shorten_path.h"

namespace {

TEST(Icons, LinesLieOnWholePixelsAtEveryScale) {
    for (const int size : {24, 30, 36, 48, 72}) {
        TIconCanvas canvas(size);
        canvas.Line({{4, 12}, {20, 12}}, 1.8, {255, 255, 255});
        // Down the middle column: nothing but clear and solid pixels.
        std::set<std::uint32_t> found;
        for (int y = 0; y < size; ++y) {
            found.insert(canvas.Pixels()[static_cast<std::size_t>(y * size + size / 2)]);
        }
        EXPECT_EQ(found, (std::set<std::uint32_t>{0, 0xFFFFFFFF})) << size;
    }
}

TEST(Icons, EveryImageIsDrawnInsideItsSquareAndColoursNeverExceedTheirAlpha) {
    std::set<std::vector<std::uint32_t>> different;
    for (int image = 0; image < kImageCount; ++image) {
        for (const int size : {16, 24, 36, 72}) {
            const TIconCanvas canvas = DrawImage(static_cast<TImageIndex>(image), size, TImageState::Normal);
            for (const std::uint32_t pixel : canvas.Pixels()) {
                const std::uint32_t alpha = pixel >> 24;
                ASSERT_LE((pixel >> 16) & 0xFF, alpha);
                ASSERT_LE((pixel >> 8) & 0xFF, alpha);
                ASSERT_LE(pixel & 0xFF, alpha);
            }
            EXPECT_EQ(canvas.Pixels().front(), 0U) << "the corners stay free";
            different.insert(canvas.Pixels());
        }
    }
    EXPECT_EQ(different.size(), 4U * kImageCount);
    EXPECT_NE(DrawImage(TImageIndex::StopCopy, 24, TImageState::Disabled).Pixels(),
              DrawImage(TImageIndex::StopCopy, 24, TImageState::Normal).Pixels());
}

TFits AtMost(std::size_t length) {
    return [length](std::wstring_view text) { return text.size() <= length; };
}

TEST(ShortenPath, KeepsDriveAndFileName) {
    const std::wstring path = L"C:\\Users\\Someone\\Documents\\Letters\\offer.docx";
    EXPECT_EQ(ShortenPath(path, AtMost(100)), path);
    EXPECT_EQ(ShortenPath(path, AtMost(30)), L"C:\\Users\\Someone\\D\u2026\\offer.docx");
    EXPECT_EQ(ShortenPath(path, AtMost(15)), L"C:\\\u2026\\offer.docx");
    EXPECT_EQ(ShortenPath(path, AtMost(8)), L"\u2026\\offer\u2026") << "not even the file name fits";
    EXPECT_EQ(ShortenPath(L"\\\\server\\share\\a\\b\\c.txt", AtMost(22)),
              L"\\\\server\\share\\\u2026\\c.txt");
    EXPECT_EQ(ShortenPath(L"Suche nach veränderten Daten..", AtMost(10)), L"Suche nac\u2026");
    EXPECT_EQ(ShortenPath(path, AtMost(0)), L"");
    EXPECT_EQ(ShortenPath(L"", AtMost(0)), L"");
}

TEST(ReportThrottle, ShowsNewRowsTenTimesASecondWhereAPaintingTakesThreeMilliseconds) {
    using std::chrono::milliseconds;
    TReportThrottle throttle;
    TReportThrottle::TTime now{milliseconds(1000)};
    throttle.PaintDone(now, now + milliseconds(3));
    for (int painting = 0; painting < 5; ++painting) {
        const auto begin = now;
        throttle.PaintDone(now, now + milliseconds(3));
        while (!throttle.PaintDue(now)) {
            now += milliseconds(1);
        }
        EXPECT_LE(now - begin, milliseconds(100));
        EXPECT_GE(now - begin, milliseconds(3 * TReportThrottle::kPaintShare));
    }
}

TEST(ReportThrottle, SpendsATwentiethOnPaintingAndLooksForInputSoon) {
    using std::chrono::microseconds;
    using std::chrono::milliseconds;
    for (const milliseconds cost : {milliseconds(1), milliseconds(10), milliseconds(40)}) {
        TReportThrottle throttle;
        TReportThrottle::TTime now{milliseconds(1000)};
        const auto begin = now;
        TReportThrottle::TDuration painted{};
        int paintings = 0;
        int looks = 0;
        while (now - begin < std::chrono::seconds(20)) {
            now += microseconds(100);
            if (throttle.InputDue(now)) {
                throttle.InputDone(now);
                ++looks;
            }
            if (throttle.PaintDue(now)) {
                // Now and then another program takes the processor for a second.
                const auto delay = paintings % 20 == 19 ? milliseconds(1000) : milliseconds(0);
                throttle.PaintDone(now, now + cost + delay);
                now += cost + delay;
                painted += cost;
                ++paintings;
            }
        }
        EXPECT_LE(painted, std::chrono::seconds(20) / 18) << cost.count();
        EXPECT_LE(paintings, 20 * 31);
        EXPECT_GT(paintings, 10);
        EXPECT_GT(looks, 200);
    }
}

}  // namespace
