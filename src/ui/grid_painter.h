// Draws a grid.
#pragma once

#include <windows.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "support/handles.h"
#include "ui/dpi.h"
#include "ui/grid_layout.h"
#include "ui/grid_source.h"
#include "ui/theme.h"

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
    std::optional<std::size_t> hoveredRow;  // on which the pointer is
    std::optional<std::size_t> hoveredHeader;
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
    // Whether a cell of this width shows all of the text.
    bool ShowsWhole(const std::wstring& text, const TGridColumn& column, int width) const;
    // The ellipsis button inside of its cell.
    TGridArea Button(const TGridArea& cell) const;

    void Paint(HDC context, const RECT& client, const TGridView& view) const;

private:
    void PaintHeader(HDC context, const RECT& client, const TGridView& view) const;
    void PaintRow(HDC context, const TGridView& view, std::size_t row) const;
    TGridArea CheckMark(const TGridArea& cell) const;
    void PaintIndicator(HDC context, const TGridView& view, std::size_t row) const;
    void PaintText(HDC context, const TGridArea& cell, const TGridColumn& column, const std::wstring& text,
                   TColour colour) const;
    void PaintFocusRing(HDC context, const TGridArea& cell, TColour ground) const;
    void PaintButton(HDC context, const TGridArea& cell, TColour ground) const;
    void PaintGridLines(HDC context, const TGridView& view) const;
    void PaintEditorFrame(HDC context, const TGridArea& editor) const;
    int Indent(const TGridColumn& column) const;
    // The text's lines as they are shown in a cell of that width, and the font that they are shown in.
    struct TLines {
        std::vector<std::wstring> lines;
        HFONT font = nullptr;
    };
    TLines Lines(HDC context, const std::wstring& text, const TGridColumn& column, int cellWidth) const;

    TScale scale_;
    HFONT font_ = nullptr;
    TFont narrowFont_;
    int lineHeight_ = 0;
};

// What is shown for a cell's stored text: a radio group shows the caption of the value.
std::wstring GridCellCaption(const TGridColumn& column, const std::wstring& text);
