#include "ui/grid_layout.h"

#include <algorithm>
#include <numeric>

void TGridLayout::Arrange(int width, int height, const TGridMetrics& metrics, const TGridColumns& columns,
                          std::size_t rowCount, const TMeasureRow& measureRow) {
    width_ = width;
    height_ = height;
    metrics_ = metrics;
    scrollBar_ = false;
    PlaceRows(columns, rowCount, measureRow);
    if (TotalHeight() > Body().Height()) {
        scrollBar_ = true;
        PlaceRows(columns, rowCount, measureRow);
    }
    ScrollTo(scroll_);
}

void TGridLayout::PlaceRows(const TGridColumns& columns, std::size_t rowCount,
                            const TMeasureRow& measureRow) {
    widths_ = columns.Widths(ColumnSpace(), metrics_.minimumColumnWidth);
    bottoms_.clear();
    int bottom = 0;
    for (std::size_t row = 0; row < rowCount; ++row) {
        bottom += measureRow(row, widths_);
        bottoms_.push_back(bottom);
    }
}

int TGridLayout::ColumnSpace() const {
    return std::max(0, width_ - metrics_.indicatorWidth - (scrollBar_ ? metrics_.scrollBarWidth : 0));
}

int TGridLayout::ColumnLeft(std::size_t position) const {
    return std::accumulate(widths_.begin(), widths_.begin() + static_cast<std::ptrdiff_t>(position),
                           metrics_.indicatorWidth);
}

TGridArea TGridLayout::Header(std::size_t position) const {
    const int left = ColumnLeft(position);
    return {left, 0, left + widths_[position], metrics_.headerHeight};
}

TGridArea TGridLayout::Body() const {
    return {0, metrics_.headerHeight, metrics_.indicatorWidth + ColumnSpace(),
            std::max(height_, metrics_.headerHeight)};
}

TGridArea TGridLayout::Indicator(std::size_t row) const {
    const int origin = metrics_.headerHeight - scroll_;
    return {0, origin + RowTop(row), metrics_.indicatorWidth, origin + bottoms_[row]};
}

TGridArea TGridLayout::Cell(std::size_t row, std::size_t position) const {
    const TGridArea indicator = Indicator(row);
    const int left = ColumnLeft(position);
    return {left, indicator.top, left + widths_[position], indicator.bottom};
}

std::size_t TGridLayout::RowAt(int offset) const {
    return static_cast<std::size_t>(std::upper_bound(bottoms_.begin(), bottoms_.end(), offset) -
                                    bottoms_.begin());
}

std::size_t TGridLayout::FirstVisibleRow() const {
    return RowAt(scroll_);
}

std::size_t TGridLayout::EndOfVisibleRows() const {
    return std::min(RowCount(), RowAt(scroll_ + Body().Height() - 1) + 1);
}

TGridHit TGridLayout::HitTest(int x, int y) const {
    if (y < 0 || x < 0 || x >= Body().right || y >= height_) {
        return {};
    }
    const bool inHeader = y < metrics_.headerHeight;
    if (inHeader) {
        for (std::size_t position = 0; position + 1 < widths_.size(); ++position) {
            if (std::abs(x - Header(position).right) <= metrics_.borderReach) {
                return {TGridPart::ColumnBorder, 0, position};
            }
        }
    }
    const std::size_t row = inHeader ? 0 : RowAt(y - metrics_.headerHeight + scroll_);
    if (!inHeader && row >= RowCount()) {
        return {};
    }
    if (x < metrics_.indicatorWidth) {
        return inHeader ? TGridHit{} : TGridHit{TGridPart::Indicator, row};
    }
    return {inHeader ? TGridPart::Header : TGridPart::Cell, row, DropPosition(x)};
}

std::size_t TGridLayout::DropPosition(int x) const {
    std::size_t position = 0;
    while (position + 1 < widths_.size() && x >= Header(position).right) {
        ++position;
    }
    return position;
}

TGridArea TGridLayout::ScrollBar() const {
    return {Body().right, metrics_.headerHeight, width_, std::max(height_, metrics_.headerHeight)};
}

TScrollRange TGridLayout::ScrollRange() const {
    return {TotalHeight(), Body().Height(), scroll_};
}

bool TGridLayout::ScrollTo(int position) {
    const int former = scroll_;
    scroll_ = std::clamp(position, 0, ScrollRange().End());
    return scroll_ != former;
}

bool TGridLayout::ScrollIntoView(std::size_t row) {
    if (row >= RowCount()) {
        return false;
    }
    if (RowTop(row) < scroll_ || bottoms_[row] - RowTop(row) > Body().Height()) {
        return ScrollTo(RowTop(row));
    }
    return bottoms_[row] > scroll_ + Body().Height() && ScrollTo(bottoms_[row] - Body().Height());
}

std::size_t TGridLayout::PageFrom(std::size_t row, bool down) const {
    if (RowCount() == 0) {
        return 0;
    }
    const int page = Body().Height();
    const std::size_t target = RowAt(std::max(0, RowTop(row) + (down ? page : -page)));
    const std::size_t last = RowCount() - 1;
    // A row higher than the page must not hold the cursor.
    return down ? std::min(last, std::max(target, row + 1)) : std::min(target, row == 0 ? 0 : row - 1);
}
