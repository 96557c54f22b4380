#include "ui/grid_layout.h"

#include <gtest/gtest.h>

namespace {

constexpr TGridMetrics kMetrics{20, 25, 12, 10, 3};

class GridLayout : public testing::Test {
protected:
    void Arrange(std::size_t rows, int height = 120) {
        layout.Arrange(337, height, kMetrics, columns, rows,
                       [](std::size_t row, const std::vector<int>&) { return row == 1 ? 40 : 20; });
    }

    TGridColumns columns{{{L"a", L"A", L"", TGridEditor::CheckBox, 100, {}},
                          {L"b", L"B", L"", TGridEditor::ButtonText, 200, {}}}};
    TGridLayout layout;
};

TEST_F(GridLayout, EveryPointOfACellIsFoundAgain) {
    Arrange(3);
    EXPECT_FALSE(layout.HasScrollBar());
    EXPECT_EQ(layout.Cell(0, 0), (TGridArea{25, 20, 129, 40}));
    EXPECT_EQ(layout.Cell(1, 1), (TGridArea{129, 40, 337, 80}));
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t position = 0; position < 2; ++position) {
            const TGridArea cell = layout.Cell(row, position);
            const TGridHit expected{TGridPart::Cell, row, position};
            EXPECT_EQ(layout.HitTest(cell.left, cell.top), expected);
            EXPECT_EQ(layout.HitTest(cell.right - 1, cell.bottom - 1), expected);
        }
    }
    EXPECT_EQ(layout.HitTest(10, 50), (TGridHit{TGridPart::Indicator, 1, 0}));
    EXPECT_EQ(layout.HitTest(200, 5), (TGridHit{TGridPart::Header, 0, 1}));
    EXPECT_EQ(layout.HitTest(127, 5), (TGridHit{TGridPart::ColumnBorder, 0, 0}));
    EXPECT_EQ(layout.HitTest(131, 5), (TGridHit{TGridPart::ColumnBorder, 0, 0}));
    EXPECT_EQ(layout.HitTest(336, 5), (TGridHit{TGridPart::Header, 0, 1})) << "the last border is no handle";
    for (const auto& [x, y] : {std::pair{10, 5}, {200, 100}, {-1, 50}, {400, 50}, {200, 130}}) {
        EXPECT_EQ(layout.HitTest(x, y), TGridHit{}) << x << " " << y;
    }
}

TEST_F(GridLayout, RowsThatDoNotFitScroll) {
    Arrange(10);  // 220 high in a body of 100
    ASSERT_TRUE(layout.HasScrollBar());
    EXPECT_EQ(layout.ColumnSpace(), 300);
    EXPECT_EQ(layout.ScrollBar(), (TGridArea{325, 20, 337, 120}));
    EXPECT_EQ(layout.ScrollRange(), (TScrollRange{220, 100, 0}));
    EXPECT_EQ(layout.EndOfVisibleRows(), 4u);

    EXPECT_TRUE(layout.ScrollIntoView(9));
    EXPECT_EQ(layout.ScrollRange().position, 120);
    EXPECT_EQ(layout.FirstVisibleRow(), 5u);
    EXPECT_EQ(layout.EndOfVisibleRows(), 10u);
    EXPECT_EQ(layout.HitTest(200, 119), (TGridHit{TGridPart::Cell, 9, 1}));
    EXPECT_FALSE(layout.ScrollIntoView(7)) << "it is in sight";
    EXPECT_TRUE(layout.ScrollIntoView(0));
    EXPECT_TRUE(layout.ScrollTo(500));
    EXPECT_EQ(layout.ScrollRange().position, 120);
    EXPECT_FALSE(layout.ScrollTo(5000));

    // Fewer rows: what was scrolled away comes back.
    Arrange(6);
    EXPECT_EQ(layout.ScrollRange().position, 40);
    Arrange(2);
    EXPECT_EQ(layout.ScrollRange().position, 0);
    EXPECT_FALSE(layout.HasScrollBar());
}

TEST_F(GridLayout, PagesAlwaysMoveOn) {
    Arrange(10);
    EXPECT_EQ(layout.PageFrom(0, true), 4u);
    EXPECT_EQ(layout.PageFrom(8, true), 9u);
    EXPECT_EQ(layout.PageFrom(9, false), 4u);
    EXPECT_EQ(layout.PageFrom(0, false), 0u);
    Arrange(10, 50);  // the body is lower than the second row
    EXPECT_EQ(layout.PageFrom(1, true), 2u);
    EXPECT_EQ(layout.PageFrom(2, false), 1u);
    Arrange(0, 10);  // no room for anything
    EXPECT_EQ(layout.PageFrom(0, true), 0u);
    EXPECT_EQ(layout.EndOfVisibleRows(), 0u);
    EXPECT_EQ(layout.HitTest(200, 30), TGridHit{});
}

}  // namespace
