// Where the parts of a grid stand.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

#include "ui/grid_columns.h"
#include "ui/scroll_range.h"

// An area in device pixels of the grid's window; right and bottom lie outside.
struct TGridArea {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    int Width() const { return right - left; }
    int Height() const { return bottom - top; }
    bool Contains(int x, int y) const { return x >= left && x < right && y >= top && y < bottom; }

    friend bool operator==(const TGridArea&, const TGridArea&) = default;
};

// Sizes in device pixels.
struct TGridMetrics {
    int headerHeight = 0;
    int indicatorWidth = 0;
    int scrollBarWidth = 0;
    int minimumColumnWidth = 0;
    int borderReach = 0;  // how far beside a column's border the mouse still takes hold of it
};

enum class TGridPart { Nothing, Header, ColumnBorder, Indicator, Cell };

// What lies at a point.
struct TGridHit {
    TGridPart part = TGridPart::Nothing;
    std::size_t row = 0;       // of Indicator and Cell
    std::size_t position = 0;  // of Header, ColumnBorder (the column left of it) and Cell

    friend bool operator==(const TGridHit&, const TGridHit&) = default;
};

// Lays a grid out: header, row indicator, cells, and a scroll bar when the rows do not fit. Rows have heights
// of their own and scroll by pixels.
class TGridLayout {
public:
    // The height of a row whose visible columns have these widths.
    using TMeasureRow = std::function<int(std::size_t row, const std::vector<int>& widths)>;

    // Lays everything out anew; the scroll position stays where it can.
    void Arrange(int width, int height, const TGridMetrics& metrics, const TGridColumns& columns,
                 std::size_t rowCount, const TMeasureRow& measureRow);

    std::size_t RowCount() const { return bottoms_.size(); }
    // The width that the columns share.
    int ColumnSpace() const;
    const TGridMetrics& Metrics() const { return metrics_; }

    TGridArea Header(std::size_t position) const;
    TGridArea Body() const;  // everything below the header, without the scroll bar
    TGridArea Indicator(std::size_t row) const;
    TGridArea Cell(std::size_t row, std::size_t position) const;
    // The first row that can be seen and the one behind the last.
    std::size_t FirstVisibleRow() const;
    std::size_t EndOfVisibleRows() const;

    TGridHit HitTest(int x, int y) const;
    // Which column a header that is dragged to x would be put on.
    std::size_t DropPosition(int x) const;

    bool HasScrollBar() const { return scrollBar_; }
    TGridArea ScrollBar() const;
    TScrollRange ScrollRange() const;  // in pixels
    // True when the position has changed.
    bool ScrollTo(int position);
    bool ScrollIntoView(std::size_t row);
    // The row a page further down or up.
    std::size_t PageFrom(std::size_t row, bool down) const;

private:
    void PlaceRows(const TGridColumns& columns, std::size_t rowCount, const TMeasureRow& measureRow);
    int RowTop(std::size_t row) const { return row == 0 ? 0 : bottoms_[row - 1]; }
    int TotalHeight() const { return bottoms_.empty() ? 0 : bottoms_.back(); }
    std::size_t RowAt(int offset) const;
    int ColumnLeft(std::size_t position) const;

    int width_ = 0;
    int height_ = 0;
    TGridMetrics metrics_;
    bool scrollBar_ = false;
    int scroll_ = 0;
    std::vector<int> widths_;   // of the visible columns
    std::vector<int> bottoms_;  // of the rows, from the top of the first
};
