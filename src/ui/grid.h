// The grid: a table with a cursor, edited in place.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "ui/dpi.h"
#include "ui/drawn_control.h"
#include "ui/grid_accessible.h"
#include "ui/grid_columns.h"
#include "ui/grid_editors.h"
#include "ui/grid_layout.h"
#include "ui/grid_navigator.h"
#include "ui/grid_painter.h"
#include "ui/grid_source.h"
#include "ui/scroll_bar.h"
#include "ui/tool_tips.h"

struct TGridTexts {
    std::wstring name;       // what a screen reader calls the grid
    std::wstring empty;      // shown when there are no rows
    std::wstring deleteRow;  // in the menu of a row
};

// Shows a source's rows and edits them in place. Columns share the width, rows grow with their content, the
// current row is the source's. Columns and source must outlive the window.
class TGrid final : public TDrawnControl, private TGridEditorHost, private TGridAccessibleSide {
public:
    TGrid(TGridColumns& columns, TGridSource& source);
    ~TGrid() override;

    [[nodiscard]] bool CreateIn(HWND parent, TGridTexts texts, TScale scale, HFONT font);
    void SetScale(TScale scale, HFONT font);
    // Shows the columns anew after they were changed from outside.
    void ColumnsChanged();

    bool Editing() const { return navigator_.Editing(); }
    // Ends an edit and keeps what was entered.
    void TakeOver() { navigator_.TakeOver(); }

    const TGridLayout& Layout() const { return layout_; }
    std::size_t FocusedColumn() const { return navigator_.FocusedColumn(); }
    // The control of the edit in progress.
    HWND EditorHandle() const { return editors_.Handle(); }
    // What a cell shows; empty for a check box.
    std::wstring CellCaption(std::size_t row, std::size_t column) const;
    // What is told of the cell or header at a point of the grid; empty if nothing.
    std::wstring HintAt(POINT point) const;

protected:
    std::optional<LRESULT> HandleMessage(UINT message, WPARAM wordParameter, LPARAM longParameter) override;

private:
    // What the mouse does while its button is down.
    enum class TDrag { None, ColumnWidth, Header };

    // TGridEditorHost
    void OpenEditor(std::size_t column, const std::wstring& text, bool selectAll) override;
    std::wstring EditorText() const override { return editors_.Text(); }
    void CloseEditor() override;
    void FocusedCellChanged() override;
    std::size_t PageFrom(std::size_t row, bool down) const override { return layout_.PageFrom(row, down); }

    // TGridAccessibleSide
    std::wstring GridName() const override { return texts_.name; }
    std::size_t CellCount() const override;
    std::size_t CellsPerRow() const override { return columns_.Visible().size(); }
    std::wstring RowName(std::size_t row) const override;
    std::optional<std::size_t> FocusedCell() const override;
    TGridCellDescription DescribeCell(std::size_t cell) const override;
    std::optional<std::size_t> CellAt(POINT screenPoint) const override;
    void SelectCell(std::size_t cell) override;
    void DoCellAction(std::size_t cell) override;

    void Paint() override;
    void SourceChanged();
    void Arrange();
    int MeasureRow(std::size_t row, const std::vector<int>& widths) const;
    TGridView View() const;
    void TellScreenReader(DWORD event) const;
    TGridArea FocusedCellArea() const;

    std::optional<LRESULT> KeyMessage(UINT message, WPARAM wordParameter);
    bool UseKey(TGridKey key);
    void LeaveGrid(bool forward);
    void FocusReceived(HWND from);
    std::optional<LRESULT> MouseMessage(UINT message, POINT point);
    void ButtonDown(POINT point);
    TGridNavigator::TSpot SpotAt(const TGridHit& hit, POINT point) const;
    void MouseMoved(POINT point);
    void PointAt(const TGridHit& hit, POINT point);
    void ButtonUp();
    void ScrollTo(int position);
    void ShowRows();
    void Wheel(int delta);
    void ShowMenu(POINT screenPoint);
    void ShowColumnMenu(POINT screenPoint);
    bool SetPointer() const;

    TGridColumns& columns_;
    TGridSource& source_;
    TGridLayout layout_;
    TGridNavigator navigator_;
    TGridEditors editors_;
    TGridPainter painter_;
    TScrollBar scrollBar_;
    TGridAccessibleOwner accessible_;
    TGridTexts texts_;
    std::optional<std::uint64_t> shownRow_;  // the key of the current row when it was last scrolled to

    TDrag drag_ = TDrag::None;
    std::size_t dragPosition_ = 0;
    int dragOffset_ = 0;                       // from the pointer to what is dragged
    std::optional<std::size_t> dropPosition_;  // of a header that has left its place
    TGridHit pointedAt_;
    TToolTips toolTips_;
    int wheelRest_ = 0;
};
