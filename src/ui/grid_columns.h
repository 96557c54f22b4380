// How the columns of a grid share its width.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "ui/grid_column.h"

// Knows the order, the visibility and the widths of a grid's columns. An index means a column as the
// constructor was given it; a position counts the visible columns from the left. One column is always
// visible.
class TGridColumns {
public:
    explicit TGridColumns(std::vector<TGridColumn> columns);

    std::size_t Count() const { return columns_.size(); }
    const TGridColumn& operator[](std::size_t index) const { return columns_[index]; }
    // The indexes of the visible columns by their position.
    const std::vector<std::size_t>& Visible() const { return visible_; }
    // The position of a column; Visible().size() when it is hidden.
    std::size_t PositionOf(std::size_t index) const;
    void SetVisible(std::size_t index, bool visible);

    // Puts a visible column where another one stands; those between move up.
    void Move(std::size_t fromPosition, std::size_t toPosition);

    // The widths of the visible columns, which together are exactly `available` device pixels; none is less
    // than `minimum` as long as all have room for it.
    std::vector<int> Widths(int available, int minimum) const;
    // Makes a column as wide as asked, as far as possible: the columns right of it share what remains, those
    // left of it keep their widths.
    void Resize(std::size_t position, int width, int available, int minimum);

    // Order, widths and visibility as text, and back. A text that is damaged, or of another version,
    // changes nothing and gives false; columns it does not name stay behind those that it does.
    std::wstring Store() const;
    bool Restore(std::wstring_view text);

private:
    struct TPlace {
        std::size_t index = 0;
        int share = 0;  // hundredths of a pixel at 100 %
        bool visible = true;
    };

    void FindVisible();
    TPlace& PlaceAt(std::size_t position);

    std::vector<TGridColumn> columns_;
    std::vector<TPlace> places_;  // from left to right, hidden ones included
    std::vector<std::size_t> visible_;
};
