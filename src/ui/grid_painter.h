// Draws a grid.
#pragma once

#include <windows.h>

#include <functional>
#include <optional>
#include <string>

#include "ui/dpi.h"
#include "ui/grid_layout.h"
#include "ui/grid_source.h"

// What there is to draw.
struct TGridView {
    const TGridColumns& columns;
    const TGridLayout& layout;
    const TGridSource& source;
    std::size_t focusedColumn = 0;
    bool hasFocus = false;              // the grid or its editor
    std::optional<TGridArea> editor;    // of the edit in progress
    std::optional<std::size_t> dropAt;  // the position a dragged header would get
    std::size_t dragged = 0;
    const std::wstring& emptyText;
};

// Draws a grid at one scale, and measures what it draws.
class TGridPainter {
public:
    void SetScale(TScale scale, HFONT font);
    TScale Scale() const { return scale_; }
    TGridMetrics Metrics() const;
    int MinimumRowHeight() const;
    // The height that the text needs in a cell of this width.
    int TextCellHeight(const std::wstring& text, const TGridColumn& column, int width) const;
    // The mark of a check box and the ellipsis button inside of their cell.
    TGridArea CheckMark(const TGridArea& cell) const;
    TGridArea Button(const TGridArea& cell) const;

    void Paint(HDC context, const RECT& client, const TGridView& view) const;

private:
    void PaintHeader(HDC context, const RECT& client, const TGridView& view) const;
    void PaintRow(HDC context, const TGridView& view, std::size_t row) const;
    void PaintIndicator(HDC context, const TGridView& view, std::size_t row) const;
    void PaintText(HDC context, const TGridArea& cell, const TGridColumn& column,
                   const std::wstring& text) const;
    void PaintButton(HDC context, const TGridArea& cell) const;
    void PaintGridLines(HDC context, const TGridView& view) const;
    void PaintEditorFrame(HDC context, const TGridArea& editor) const;
    int TextWidth(const TGridColumn& column, int cellWidth) const;

    TScale scale_;
    HFONT font_ = nullptr;
    int lineHeight_ = 0;
};

// What is shown for a cell's stored text: a radio group shows the caption of the value.
std::wstring GridCellCaption(const TGridColumn& column, const std::wstring& text);
