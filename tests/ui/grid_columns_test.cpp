#include "ui/grid_columns.h"

#include <gmock/gmock.h>

#include <numeric>

namespace {

using testing::ElementsAre;

TGridColumns ThreeColumns() {
    return TGridColumns({{L"a", L"A", L"", TGridEditor::CheckBox, 50, {}},
                         {L"b", L"B", L"", TGridEditor::ButtonText, 200, {}},
                         {L"c", L"C", L"", TGridEditor::RadioGroup, 100, {}}});
}

TEST(GridColumns, ShareTheWidthToTheLastPixel) {
    const TGridColumns columns = ThreeColumns();
    EXPECT_THAT(columns.Widths(350, 20), ElementsAre(50, 200, 100));
    EXPECT_THAT(columns.Widths(700, 20), ElementsAre(100, 400, 200));
    for (int available = 0; available < 900; ++available) {
        const std::vector<int> widths = columns.Widths(available, 30);
        ASSERT_EQ(std::accumulate(widths.begin(), widths.end(), 0), available);
        if (available >= 90) {
            ASSERT_GE(*std::min_element(widths.begin(), widths.end()), 30) << available;
        }
    }
}

TEST(GridColumns, SizingTakesFromTheColumnsToTheRight) {
    TGridColumns columns = ThreeColumns();
    columns.Resize(0, 110, 350, 20);
    EXPECT_THAT(columns.Widths(350, 20), ElementsAre(110, 160, 80));
    // No further than to the minimum of the others, nor below the own one.
    columns.Resize(1, 900, 350, 20);
    EXPECT_THAT(columns.Widths(350, 20), ElementsAre(110, 220, 20));
    columns.Resize(1, 0, 350, 20);
    EXPECT_THAT(columns.Widths(350, 20), ElementsAre(110, 20, 220));
    // The last column has no right border to drag.
    columns.Resize(2, 10, 350, 20);
    EXPECT_THAT(columns.Widths(350, 20), ElementsAre(110, 20, 220));
}

TEST(GridColumns, MovingKeepsHiddenColumnsInTheirPlace) {
    TGridColumns columns = ThreeColumns();
    columns.Move(0, 2);
    EXPECT_THAT(columns.Visible(), ElementsAre(1, 2, 0));
    columns.Move(2, 1);
    EXPECT_THAT(columns.Visible(), ElementsAre(1, 0, 2));
    columns.SetVisible(0, false);
    columns.Move(0, 1);
    EXPECT_THAT(columns.Visible(), ElementsAre(2, 1));
    columns.SetVisible(2, false);
    columns.SetVisible(1, false);
    EXPECT_THAT(columns.Visible(), ElementsAre(1)) << "the last column cannot be hidden";
}

TEST(GridColumns, AStoredLayoutIsRestored) {
    TGridColumns columns = ThreeColumns();
    columns.Resize(0, 111, 353, 20);
    columns.Move(2, 0);
    columns.SetVisible(1, false);
    TGridColumns restored = ThreeColumns();
    ASSERT_TRUE(restored.Restore(columns.Store()));
    EXPECT_EQ(restored.Visible(), columns.Visible());
    EXPECT_EQ(restored.Widths(353, 20), columns.Widths(353, 20));
    EXPECT_EQ(restored.Store(), columns.Store());
}

TEST(GridColumns, ALayoutOfOtherColumnsIsTakenByName) {
    TGridColumns columns = ThreeColumns();
    ASSERT_TRUE(columns.Restore(L"1;c,20000,1;formerly,500,1"));
    EXPECT_THAT(columns.Visible(), ElementsAre(2, 0, 1));
    EXPECT_THAT(columns.Widths(450, 20), ElementsAre(200, 50, 200));
}

TEST(GridColumns, ADamagedLayoutChangesNothing) {
    TGridColumns columns = ThreeColumns();
    const std::wstring before = columns.Store();
    for (const wchar_t* text : {L"", L"2;a,100,1", L"a,100,1", L"1;a", L"1;a,100", L"1;a,,1", L"1;a,0,1",
                                L"1;a,-5,1", L"1;a,99999999,1", L"1;a,1x,1", L"1;a,100,2", L"1;a,100,1,1",
                                L"1;a,100,1;a,200,1", L"1;a,100,0;b,100,0;c,100,0"}) {
        EXPECT_FALSE(columns.Restore(text)) << text;
        EXPECT_EQ(columns.Store(), before) << text;
    }
}

}  // namespace
