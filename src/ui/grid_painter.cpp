#include "ui/grid_painter.h"

#include <algorithm>

#include "support/text.h"
#include "ui/device_context.h"
#include "ui/grid_style.h"
#include "ui/grid_text.h"
#include "ui/mark_painter.h"
#include "ui/rounded_box.h"
#include "ui/window_scale.h"

namespace {

RECT ToRect(const TGridArea& area) {
    return {area.left, area.top, area.right, area.bottom};
}

TMeasureText MeasureIn(HDC context) {
    return [context](std::wstring_view text) {
        SIZE size{};
        GetTextExtentPoint32W(context, text.data(), static_cast<int>(text.size()), &size);
        return static_cast<int>(size.cx);
    };
}

TColour TextColour(bool isSelected, bool isDimmed) {
    const TTheme& theme = Theme();
    if (isDimmed && !(isSelected && theme.isHighContrast)) {
        return theme.disabledText;
    }
    return isSelected ? theme.selectionText : theme.text;
}

}  // namespace

std::wstring GridCellCaption(const TGridColumn& column, const std::wstring& text) {
    for (const TGridItem& item : column.items) {
        if (EqualsIgnoringAsciiCase(item.value, text)) {
            return item.caption;
        }
    }
    return text;
}

void TGridPainter::SetScale(TScale scale, HFONT font) {
    scale_ = scale;
    font_ = font;
    lineHeight_ = TextHeight(font);
    narrowFont_ = MakeNarrowFont(font);
}

TGridMetrics TGridPainter::Metrics() const {
    TGridMetrics metrics;
    metrics.headerHeight = lineHeight_ + 2 * scale_(GridStyle::HeaderPadding);
    metrics.indicatorWidth = scale_(GridStyle::Indicator);
    metrics.scrollBarWidth = scale_(GridStyle::ScrollBar);
    metrics.minimumColumnWidth = scale_(GridStyle::MinimumColumn);
    metrics.borderReach = scale_(GridStyle::BorderReach);
    return metrics;
}

int TGridPainter::MinimumRowHeight() const {
    return lineHeight_ + 2 * scale_(GridStyle::CellPaddingY);
}

int TGridPainter::Indent(const TGridColumn& column) const {
    return scale_(column.items.empty() ? GridStyle::CellPaddingX : GridStyle::ChoicePaddingX);
}

// A choice is one of a few words, which together with its neighbours tells a user less when it is cut than
// when it is narrow.
TGridPainter::TLines TGridPainter::Lines(HDC context, const std::wstring& text, const TGridColumn& column,
                                         int cellWidth) const {
    const int right =
        column.editor == TGridEditor::ButtonText ? scale_(GridStyle::ButtonWidth) : Indent(column);
    const int width = cellWidth - Indent(column) - right;
    const TMeasureText measure = MeasureIn(context);
    if (!column.items.empty()) {
        const TSelection selection(context, font_);
        if (measure(text) > width) {
            const TSelection narrow(context, narrowFont_.Get());
            return {{CutWithEllipsis(text, width, measure)}, narrowFont_.Get()};
        }
    }
    const TSelection selection(context, font_);
    return {BreakCellText(text, width, GridStyle::MaximumLines, measure), font_};
}

int TGridPainter::TextCellHeight(const std::wstring& text, const TGridColumn& column, int width) const {
    const TScreenContext screen;
    const std::size_t lines = Lines(screen.Get(), text, column, width).lines.size();
    return static_cast<int>(lines) * lineHeight_ + 2 * scale_(GridStyle::CellPaddingY);
}

bool TGridPainter::ShowsWhole(const std::wstring& text, const TGridColumn& column, int width) const {
    const TScreenContext screen;
    const std::vector<std::wstring> lines = Lines(screen.Get(), text, column, width).lines;
    return std::none_of(lines.begin(), lines.end(), [&](const std::wstring& line) {
        return line.ends_with(L'…') && text.find(line) == std::wstring::npos;
    });
}

TGridArea TGridPainter::CheckMark(const TGridArea& cell) const {
    const int size = scale_(kMarkSize);
    const int left = cell.left + (cell.Width() - size) / 2;
    const int top = cell.top + (MinimumRowHeight() - size) / 2;
    return {left, top, left + size, top + size};
}

TGridArea TGridPainter::Button(const TGridArea& cell) const {
    const int margin = scale_(2);
    return {std::max(cell.left, cell.right - scale_(GridStyle::ButtonWidth)) + margin, cell.top + margin,
            cell.right - 2 * margin, cell.top + MinimumRowHeight() - margin};
}

void TGridPainter::Paint(HDC context, const RECT& client, const TGridView& view) const {
    FillArea(context, client, Theme().controlGround);
    const TSelection selection(context, font_);
    SetBkMode(context, TRANSPARENT);
    const TGridLayout& layout = view.layout;
    for (std::size_t row = layout.FirstVisibleRow(); row < layout.EndOfVisibleRows(); ++row) {
        PaintRow(context, view, row);
    }
    if (layout.RowCount() > 0) {
        PaintGridLines(context, view);
    } else {
        RECT area = ToRect(layout.Body());
        InflateRect(&area, -scale_(16), -scale_(12));
        SetTextColor(context, ColorRefOf(Theme().dimText));
        DrawTextW(context, view.emptyText.c_str(), -1, &area, DT_CENTER | DT_WORDBREAK | DT_NOPREFIX);
        if (view.hasFocus) {
            FrameArea(context, ToRect(layout.Body()), Theme().accent, std::max(1, scale_(1)));
        }
    }
    if (view.editor) {
        PaintEditorFrame(context, *view.editor);
    }
    PaintHeader(context, client, view);
}

void TGridPainter::PaintHeader(HDC context, const RECT& client, const TGridView& view) const {
    const TGridLayout& layout = view.layout;
    const TGridMetrics& metrics = layout.Metrics();
    FillArea(context, {0, 0, client.right, metrics.headerHeight}, Theme().headerGround);
    const int line = std::max(1, scale_(1));
    FillArea(context, {0, metrics.headerHeight - line, client.right, metrics.headerHeight}, Theme().border);
    FillArea(context, {metrics.indicatorWidth - line, 0, metrics.indicatorWidth, metrics.headerHeight},
             Theme().border);
    const std::vector<std::size_t>& visible = view.columns.Visible();
    for (std::size_t position = 0; position < visible.size(); ++position) {
        const TGridColumn& column = view.columns[visible[position]];
        RECT area = ToRect(layout.Header(position));
        if (view.hoveredHeader == position) {
            FillArea(context, {area.left, area.top, area.right, area.bottom - line}, Theme().hover);
        }
        if (view.dropAt && view.dragged == position) {
            FillArea(context, {area.left, area.top, area.right, area.bottom - line}, Theme().pressed);
        }
        FillArea(context, {area.right - line, area.top, area.right, area.bottom}, Theme().border);
        InflateRect(&area, -Indent(column), 0);
        SetTextColor(context, ColorRefOf(Theme().text));
        const UINT alignment = column.editor == TGridEditor::CheckBox ? DT_CENTER : DT_LEFT;
        DrawTextW(context, column.caption.c_str(), -1, &area,
                  alignment | DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS);
    }
    if (view.dropAt) {
        const TGridArea target = layout.Header(*view.dropAt);
        const int edge = *view.dropAt > view.dragged ? target.right : target.left;
        FillArea(context, {edge - scale_(2), 0, edge + scale_(1), metrics.headerHeight}, Theme().accent);
    }
}

void TGridPainter::PaintRow(HDC context, const TGridView& view, std::size_t row) const {
    const bool isCurrent = view.source.CurrentRow() == row;
    const TColour ground = isCurrent ? (view.hasFocus ? Theme().selection : Theme().selectionIdle)
                           : view.hoveredRow == row ? Theme().hover
                           : row % 2 == 0           ? Theme().controlGround
                                                    : Theme().alternateGround;
    const TGridLayout& layout = view.layout;
    RECT area = ToRect(layout.Indicator(row));
    area.right = layout.Body().right;
    FillArea(context, area, ground);
    PaintIndicator(context, view, row);
    const std::vector<std::size_t>& visible = view.columns.Visible();
    for (std::size_t position = 0; position < visible.size(); ++position) {
        const TGridColumn& column = view.columns[visible[position]];
        const TGridArea cell = layout.Cell(row, position);
        const bool isFocused = isCurrent && view.focusedColumn == visible[position];
        if (isFocused && view.hasFocus && !view.editor) {
            PaintFocusRing(context, cell, ground);
        }
        if (column.editor == TGridEditor::CheckBox) {
            const bool checked = view.source.Checked(row, visible[position]);
            PaintMark(context, ToRect(CheckMark(cell)), checked ? TMark::CheckOn : TMark::CheckOff, scale_,
                      ground);
        } else if (!(isFocused && view.editor)) {
            PaintText(context, cell, column,
                      GridCellCaption(column, view.source.Text(row, visible[position])),
                      TextColour(isCurrent, view.source.Dimmed(row, visible[position])));
        }
        if (column.editor == TGridEditor::ButtonText && isCurrent) {
            PaintButton(context, cell, ground);
        }
    }
}

void TGridPainter::PaintIndicator(HDC context, const TGridView& view, std::size_t row) const {
    RECT area = ToRect(view.layout.Indicator(row));
    FillArea(context, area, Theme().headerGround);
    area.bottom = area.top + MinimumRowHeight();
    const bool hasWarning = !view.source.Warning(row).empty();
    RECT warning = area;
    warning.left = warning.right - scale_(kMarkSize);
    if (view.source.CurrentRow() == row) {
        if (hasWarning) {
            area.right = warning.left + scale_(2);  // both marks are narrower than their squares
        }
        PaintMark(context, area, view.editor ? TMark::EditedRow : TMark::CurrentRow, scale_,
                  Theme().headerGround);
    }
    if (hasWarning) {
        PaintMark(context, warning, TMark::Warning, scale_, Theme().headerGround);
    }
}

void TGridPainter::PaintText(HDC context, const TGridArea& cell, const TGridColumn& column,
                             const std::wstring& text, TColour colour) const {
    const TLines shown = Lines(context, text, column, cell.Width());
    const TSelection selection(context, shown.font);
    SetTextColor(context, ColorRefOf(colour));
    int top = cell.top + scale_(GridStyle::CellPaddingY);
    const RECT clip = ToRect(cell);
    for (const std::wstring& line : shown.lines) {
        ExtTextOutW(context, cell.left + Indent(column), top, ETO_CLIPPED, &clip, line.c_str(),
                    static_cast<UINT>(line.size()), nullptr);
        top += lineHeight_;
    }
}

void TGridPainter::PaintFocusRing(HDC context, const TGridArea& cell, TColour ground) const {
    RECT frame = ToRect(cell);
    frame.right -= scale_(1);
    PaintRoundedBox(context, frame,
                    {.ground = ground,
                     .border = Theme().selectionFocus,
                     .outside = ground,
                     .thickness = scale_(1),
                     .radius = scale_(kCornerRadius)});
}

void TGridPainter::PaintButton(HDC context, const TGridArea& cell, TColour ground) const {
    const RECT button = ToRect(Button(cell));
    PaintRoundedBox(context, button,
                    {.ground = Theme().headerGround,
                     .border = Theme().controlBorder,
                     .outside = ground,
                     .thickness = scale_(1),
                     .radius = scale_(kCornerRadius)});
    // Three dots, as sharp as the rest; the font's own stand at the foot of the line.
    const int dot = std::max(1, scale_(2));
    const int middle = (button.left + button.right - dot) / 2;
    const int top = (button.top + button.bottom - dot) / 2;
    for (const int offset : {-2 * dot, 0, 2 * dot}) {
        FillArea(context, {middle + offset, top, middle + offset + dot, top + dot}, Theme().text);
    }
}

void TGridPainter::PaintGridLines(HDC context, const TGridView& view) const {
    const TGridArea body = view.layout.Body();
    const int line = std::max(1, scale_(1));
    const int indicator = view.layout.Metrics().indicatorWidth;
    FillArea(context, {indicator - line, body.top, indicator, body.bottom}, Theme().border);
    for (std::size_t position = 0; position < view.columns.Visible().size(); ++position) {
        const int right = view.layout.Header(position).right;
        FillArea(context, {right - line, body.top, right, body.bottom}, Theme().border);
    }
}

void TGridPainter::PaintEditorFrame(HDC context, const TGridArea& editor) const {
    RECT frame = ToRect(editor);
    InflateRect(&frame, scale_(GridStyle::CellPaddingX), scale_(GridStyle::CellPaddingY));
    PaintRoundedBox(context, frame,
                    {.ground = Theme().controlGround,
                     .border = Theme().accent,
                     .outside = Theme().selection,
                     .thickness = scale_(1),
                     .radius = scale_(kCornerRadius)});
}
