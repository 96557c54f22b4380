// The controls in which a grid's cells are edited.
#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

#include "ui/dpi.h"
#include "ui/drawn_control.h"
#include "ui/grid_accessible.h"
#include "ui/grid_column.h"
#include "ui/grid_layout.h"
#include "ui/grid_navigator.h"

// The grid's key for a virtual-key code with the modifiers that are down now; nothing for others.
std::optional<TGridKey> GridKeyOf(WPARAM virtualKey);

// What the editors tell the grid.
struct TGridEditorEvents {
    // A key before the editor looks at it; true when it is used up.
    std::function<bool(TGridKey)> key;
    std::function<void()> lostFocus;
    // The user has made a choice that needs no confirmation.
    std::function<void()> chosen;
};

// Offers the choices of a radio group, one below the other. A screen reader hears each that is gone through.
class TGridRadioPanel final : public TDrawnControl, private TGridAccessibleSide {
public:
    [[nodiscard]] bool CreateIn(HWND grid, TGridEditorEvents events);
    void SetItems(const TGridColumn& column, const std::wstring& value);
    void SetScale(TScale scale, HFONT font);
    // The size that all captions have room in.
    SIZE PreferredSize() const;
    std::wstring Value() const;

protected:
    std::optional<LRESULT> HandleMessage(UINT message, WPARAM wordParameter, LPARAM longParameter) override;

private:
    bool KeyDown(WPARAM virtualKey);
    void Select(std::size_t item);
    void Paint() override;

    // TGridAccessibleSide: the choices are its cells.
    std::wstring GridName() const override { return name_; }
    std::size_t CellCount() const override { return items_.size(); }
    std::optional<std::size_t> FocusedCell() const override;
    TGridCellDescription DescribeCell(std::size_t item) const override;
    std::optional<std::size_t> CellAt(POINT screenPoint) const override;
    void SelectCell(std::size_t item) override { Select(item); }
    void DoCellAction(std::size_t item) override;

    RECT ItemArea(std::size_t item) const;
    std::optional<std::size_t> ItemAt(POINT point) const;
    void TellScreenReader() const;

    TGridEditorEvents events_;
    TGridAccessibleOwner accessible_;
    std::wstring name_;
    std::vector<TGridItem> items_;
    std::wstring value_;  // kept when it is none of the items
    std::size_t selected_ = 0;
    TScale scale_;
    HFONT font_ = nullptr;
};

// Edits one cell at a time: a text in one line or in several, or a choice.
class TGridEditors {
public:
    TGridEditors() = default;
    TGridEditors(const TGridEditors&) = delete;
    TGridEditors& operator=(const TGridEditors&) = delete;

    [[nodiscard]] bool CreateIn(HWND grid, TGridEditorEvents events);
    void SetScale(TScale scale, HFONT font);

    void Open(const TGridColumn& column, const std::wstring& text, bool selectAll, const TGridArea& cell,
              const TGridArea& body);
    // Where the editor of a cell stands; it stays inside of the grid's body but may cover other cells. Its
    // frame is drawn by the grid around this area.
    void Place(const TGridArea& cell, const TGridArea& body);
    void Close();

    bool IsOpen() const { return open_ != nullptr; }
    HWND Handle() const { return open_; }
    const TGridArea& Area() const { return area_; }
    std::wstring Text() const;

private:
    TGridArea TextArea(const TGridArea& cell, const TGridArea& body) const;
    TGridArea LinesArea(const TGridArea& cell, const TGridArea& body) const;
    TGridArea InsideFrame(const TGridArea& frame) const;
    TGridArea PanelArea(const TGridArea& cell, const TGridArea& body) const;
    static LRESULT CALLBACK EditProcedure(HWND handle, UINT message, WPARAM wordParameter,
                                          LPARAM longParameter, UINT_PTR id, DWORD_PTR data);
    std::optional<LRESULT> EditMessage(UINT message, WPARAM wordParameter);

    TGridEditorEvents events_;
    HWND grid_ = nullptr;
    HWND line_ = nullptr;   // one line
    HWND lines_ = nullptr;  // several
    TGridRadioPanel panel_;
    HWND open_ = nullptr;  // one of the three
    TGridArea area_;
    TScale scale_;
    HFONT font_ = nullptr;
};
