// What keys and clicks mean in a grid: where the focus goes, and when a cell is edited.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "ui/grid_columns.h"
#include "ui/grid_source.h"

enum class TGridKey {
    Left,
    Right,
    Up,
    Down,
    PageUp,
    PageDown,
    Home,
    End,
    FirstRow,
    LastRow,
    Tab,
    BackTab,
    Enter,
    Escape,
    Space,
    Edit,    // F2
    Button,  // F4
    Delete,
};

enum class TGridAnswer { Used, NotUsed, LeaveForward, LeaveBackward };

// The control that a cell is edited in, and the picture of the grid.
class TGridEditorHost {
public:
    virtual ~TGridEditorHost() = default;

    // Opens an editor over the focused cell with this text in it, all of it selected or the caret behind it.
    virtual void OpenEditor(std::size_t column, const std::wstring& text, bool selectAll) = 0;
    virtual std::wstring EditorText() const = 0;
    // Takes the editor away without a look at its text.
    virtual void CloseEditor() = 0;
    // The focus stands on another cell, which should come into sight.
    virtual void FocusedCellChanged() = 0;
    // The row that a page leads to.
    virtual std::size_t PageFrom(std::size_t row, bool down) const = 0;
};

// Holds the focused column and the edit of a cell; the focused row is always the source's current row. A
// cell is in one of two states: shown, or edited. F2, typing or a click on the focused cell begin an edit;
// Enter, Tab and everything that leads away take it over; Escape leaves it. Check boxes change at once.
class TGridNavigator {
public:
    TGridNavigator(TGridSource& source, const TGridColumns& columns, TGridEditorHost& host);

    std::size_t FocusedColumn() const { return column_; }
    bool Editing() const { return editedRow_.has_value(); }

    // A key in the grid or in its editor; what is not used belongs to the editor or to nobody.
    [[nodiscard]] TGridAnswer Key(TGridKey key);
    // A character typed while no cell is edited; false when it means nothing there.
    bool Character(wchar_t character);

    enum class TSpot { Elsewhere, CheckMark, Button };
    // A click on a cell.
    void Click(std::size_t row, std::size_t column, TSpot spot);
    // Puts the focus on a cell.
    void Focus(std::size_t row, std::size_t column);

    // The focus comes from the control before the grid, or from the one behind it.
    void EnterForward();
    void EnterBackward();
    // Ends an edit by taking it over, as when the focus goes to another window.
    void TakeOver();
    void Leave();
    // Whoever owns the source has changed it.
    void SourceChanged();
    // Columns were hidden, shown or moved.
    void ColumnsChanged();

private:
    TGridAnswer EditorKey(TGridKey key);
    TGridAnswer TabKey(bool backward);
    TGridAnswer MoveColumn(bool forward);
    TGridAnswer MoveRow(TGridKey key);
    void GoTo(std::size_t row, std::size_t column);
    void EditIfPossible();
    void BeginEdit(const std::wstring& text, bool selectAll);
    void EditStoredText();
    void Toggle();
    void PressButton();
    TGridEditor FocusedEditor() const { return columns_[column_].editor; }

    TGridSource& source_;
    const TGridColumns& columns_;
    TGridEditorHost& host_;
    std::size_t column_ = 0;
    std::optional<std::uint64_t> editedRow_;  // its key
};
