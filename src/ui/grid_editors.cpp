#include "ui/grid_editors.h"

#include <commctrl.h>

#include <algorithm>

#include "support/text.h"
#include "ui/device_context.h"
#include "ui/grid_style.h"
#include "ui/mark_painter.h"
#include "ui/window_scale.h"

namespace {

bool IsDown(int virtualKey) {
    return GetKeyState(virtualKey) < 0;
}

// An area of this size at the cell's left top corner, moved and cut so that it stays in the body.
TGridArea FitInto(const TGridArea& body, const TGridArea& cell, int width, int height) {
    width = std::min(width, body.Width());
    height = std::min(height, body.Height());
    const int left = std::clamp(cell.left, body.left, body.right - width);
    const int top = std::clamp(cell.top, body.top, body.bottom - height);
    return {left, top, left + width, top + height};
}

}  // namespace

std::optional<TGridKey> GridKeyOf(WPARAM virtualKey) {
    const bool control = IsDown(VK_CONTROL);
    switch (virtualKey) {
        case VK_LEFT:
            return TGridKey::Left;
        case VK_RIGHT:
            return TGridKey::Right;
        case VK_UP:
            return TGridKey::Up;
        case VK_DOWN:
            return IsDown(VK_MENU) ? TGridKey::Button : TGridKey::Down;
        case VK_PRIOR:
            return TGridKey::PageUp;
        case VK_NEXT:
            return TGridKey::PageDown;
        case VK_HOME:
            return control ? TGridKey::FirstRow : TGridKey::Home;
        case VK_END:
            return control ? TGridKey::LastRow : TGridKey::End;
        case VK_TAB:
            return IsDown(VK_SHIFT) ? TGridKey::BackTab : TGridKey::Tab;
        case VK_RETURN:
            // With Ctrl it breaks a line.
            return control ? std::nullopt : std::optional(TGridKey::Enter);
        case VK_ESCAPE:
            return TGridKey::Escape;
        case VK_F2:
            return TGridKey::Edit;
        case VK_F4:
            return IsDown(VK_MENU) ? std::nullopt : std::optional(TGridKey::Button);
        case VK_DELETE:
            return TGridKey::Delete;
        default:
            return std::nullopt;
    }
}

bool TGridRadioPanel::CreateIn(HWND grid, TGridEditorEvents events) {
    events_ = std::move(events);
    return CreateControl(grid, L"VardekoGridRadioPanel", 0);
}

void TGridRadioPanel::SetScale(TScale scale, HFONT font) {
    scale_ = scale;
    font_ = font;
}

void TGridRadioPanel::SetItems(const TGridColumn& column, const std::wstring& value) {
    name_ = column.caption;
    items_ = column.items;
    value_ = value;
    const auto found = std::find_if(items_.begin(), items_.end(), [&](const TGridItem& item) {
        return EqualsIgnoringAsciiCase(item.value, value);
    });
    selected_ = static_cast<std::size_t>(found - items_.begin());
    Repaint();
}

SIZE TGridRadioPanel::PreferredSize() const {
    int widest = 0;
    for (const TGridItem& item : items_) {
        widest = std::max(widest, TextWidth(font_, item.caption));
    }
    const int last = static_cast<int>(items_.size());
    return {widest + scale_(kMarkSize + 4 * GridStyle::CellPaddingX),
            last * (TextHeight(font_) + scale_(GridStyle::CellPaddingY))};
}

std::wstring TGridRadioPanel::Value() const {
    return selected_ < items_.size() ? items_[selected_].value : value_;
}

RECT TGridRadioPanel::ItemArea(std::size_t item) const {
    RECT client{};
    GetClientRect(Handle(), &client);
    const int height = TextHeight(font_) + scale_(GridStyle::CellPaddingY);
    const int top = static_cast<int>(item) * height;
    return {0, top, client.right, top + height};
}

void TGridRadioPanel::Paint() {
    const TPaintContext paint(Handle());
    FillArea(paint.Get(), paint.Client(), Theme().controlGround);
    const TSelection selection(paint.Get(), font_);
    SetBkMode(paint.Get(), TRANSPARENT);
    for (std::size_t item = 0; item < items_.size(); ++item) {
        const bool isSelected = item == selected_;
        RECT area = ItemArea(item);
        const TColour ground = isSelected ? Theme().selection : Theme().controlGround;
        FillArea(paint.Get(), area, ground);
        RECT mark = area;
        mark.left += scale_(GridStyle::CellPaddingX);
        mark.right = mark.left + scale_(kMarkSize);
        PaintMark(paint.Get(), mark, isSelected ? TMark::RadioOn : TMark::RadioOff, scale_, ground);
        area.left = mark.right + scale_(GridStyle::CellPaddingX);
        SetTextColor(paint.Get(), ColorRefOf(isSelected ? Theme().selectionText : Theme().text));
        DrawTextW(paint.Get(), items_[item].caption.c_str(), -1, &area,
                  DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS);
    }
}

void TGridRadioPanel::Select(std::size_t item) {
    if (item < items_.size()) {
        selected_ = item;
        Repaint();
        TellScreenReader();
    }
}

void TGridRadioPanel::TellScreenReader() const {
    const std::optional<std::size_t> item = FocusedCell();
    NotifyWinEvent(EVENT_OBJECT_FOCUS, Handle(), OBJID_CLIENT,
                   item ? TGridAccessible::ChildOfCell(*this, *item) : CHILDID_SELF);
}

std::optional<std::size_t> TGridRadioPanel::FocusedCell() const {
    return selected_ < items_.size() ? std::optional(selected_) : std::nullopt;
}

TGridCellDescription TGridRadioPanel::DescribeCell(std::size_t item) const {
    TGridCellDescription description;
    description.name = items_[item].caption;
    description.isRadioButton = true;
    description.isChecked = item == selected_;
    description.isVisible = true;
    description.area = ItemArea(item);
    MapWindowPoints(Handle(), nullptr, reinterpret_cast<POINT*>(&description.area), 2);
    return description;
}

std::optional<std::size_t> TGridRadioPanel::ItemAt(POINT point) const {
    for (std::size_t item = 0; item < items_.size(); ++item) {
        if (const RECT area = ItemArea(item); PtInRect(&area, point)) {
            return item;
        }
    }
    return std::nullopt;
}

std::optional<std::size_t> TGridRadioPanel::CellAt(POINT screenPoint) const {
    ScreenToClient(Handle(), &screenPoint);
    return ItemAt(screenPoint);
}

void TGridRadioPanel::DoCellAction(std::size_t item) {
    Select(item);
    events_.chosen();
}

bool TGridRadioPanel::KeyDown(WPARAM virtualKey) {
    if (const std::optional<TGridKey> key = GridKeyOf(virtualKey); key && events_.key(*key)) {
        return true;
    }
    const std::size_t count = items_.size();
    switch (virtualKey) {
        case VK_DOWN:
        case VK_RIGHT:
            Select(selected_ + 1 < count ? selected_ + 1 : 0);
            return true;
        case VK_UP:
        case VK_LEFT:
            Select(selected_ > 0 && selected_ <= count ? selected_ - 1 : count - 1);
            return true;
        case VK_SPACE:
            events_.chosen();
            return true;
        default:
            return false;
    }
}

std::optional<LRESULT> TGridRadioPanel::HandleMessage(UINT message, WPARAM wordParameter,
                                                      LPARAM longParameter) {
    switch (message) {
        case WM_GETDLGCODE:
            return DLGC_WANTALLKEYS | DLGC_WANTARROWS | DLGC_WANTCHARS;
        case WM_KEYDOWN:
            return KeyDown(wordParameter) ? std::optional<LRESULT>(0) : std::nullopt;
        case WM_LBUTTONDOWN: {
            const POINT point{static_cast<short>(LOWORD(longParameter)),
                              static_cast<short>(HIWORD(longParameter))};
            if (const std::optional<std::size_t> item = ItemAt(point)) {
                DoCellAction(*item);
            }
            return 0;
        }
        case WM_SETFOCUS:
            TellScreenReader();
            return 0;
        case WM_KILLFOCUS:
            events_.lostFocus();
            return 0;
        case WM_GETOBJECT:
            return accessible_.Answer(Handle(), *this, wordParameter, longParameter);
        case WM_DESTROY:
            accessible_.Part();
            return std::nullopt;
        default:
            return TDrawnControl::HandleMessage(message, wordParameter, longParameter);
    }
}

bool TGridEditors::CreateIn(HWND grid, TGridEditorEvents events) {
    grid_ = grid;
    events_ = std::move(events);
    const auto createEdit = [&](DWORD style) {
        const HWND edit = CreateChild(grid, L"EDIT", L"", style);
        SetWindowSubclass(edit, &TGridEditors::EditProcedure, 1, reinterpret_cast<DWORD_PTR>(this));
        return edit;
    };
    line_ = createEdit(ES_AUTOHSCROLL);
    lines_ = createEdit(ES_MULTILINE | ES_AUTOVSCROLL | ES_WANTRETURN);
    return line_ != nullptr && lines_ != nullptr && panel_.CreateIn(grid, events_);
}

void TGridEditors::SetScale(TScale scale, HFONT font) {
    scale_ = scale;
    font_ = font;
    for (const HWND edit : {line_, lines_}) {
        SendMessageW(edit, WM_SETFONT, reinterpret_cast<WPARAM>(font), FALSE);
        SendMessageW(edit, EM_SETMARGINS, EC_LEFTMARGIN | EC_RIGHTMARGIN, 0);
    }
    panel_.SetScale(scale, font);
}

void TGridEditors::Open(const TGridColumn& column, const std::wstring& text, bool selectAll,
                        const TGridArea& cell, const TGridArea& body) {
    if (column.editor == TGridEditor::RadioGroup) {
        panel_.SetItems(column, text);
        open_ = panel_.Handle();
        Place(cell, body);
        return;
    }
    open_ = column.editor == TGridEditor::ButtonText ? line_ : lines_;
    // The text only after the size: the field scrolls for the size that it has.
    SetWindowTextW(open_, L"");
    Place(cell, body);
    // Cut, a text would be another one: the source refuses what is too long.
    SendMessageW(open_, EM_SETLIMITTEXT, 0, 0);
    SetWindowTextW(open_, text.c_str());
    SendMessageW(open_, EM_EMPTYUNDOBUFFER, 0, 0);
    const auto end = static_cast<WPARAM>(text.size());
    SendMessageW(open_, EM_SETSEL, selectAll ? 0 : end, static_cast<LPARAM>(end));
}

void TGridEditors::Place(const TGridArea& cell, const TGridArea& body) {
    if (!IsOpen()) {
        return;
    }
    area_ = open_ == line_    ? TextArea(cell, body)
            : open_ == lines_ ? LinesArea(cell, body)
                              : PanelArea(cell, body);
    SetWindowPos(open_, HWND_TOP, area_.left, area_.top, area_.Width(), area_.Height(),
                 SWP_SHOWWINDOW | SWP_NOACTIVATE);
    if (GetFocus() != open_) {
        SetFocus(open_);
    }
}

TGridArea TGridEditors::TextArea(const TGridArea& cell, const TGridArea& body) const {
    TGridArea text = cell;
    text.left += scale_(GridStyle::CellPaddingX);
    text.top += scale_(GridStyle::CellPaddingY);
    text.right -= scale_(GridStyle::ButtonWidth) + scale_(GridStyle::CellPaddingX);
    return FitInto(body, text, text.Width(), TextHeight(font_));
}

TGridArea TGridEditors::LinesArea(const TGridArea& cell, const TGridArea& body) const {
    const int minimum = GridStyle::LinesEditorLines * TextHeight(font_) + 2 * scale_(GridStyle::CellPaddingY);
    return InsideFrame(FitInto(body, cell, std::max(cell.Width(), scale_(GridStyle::LinesEditorWidth)),
                               std::max(cell.Height(), minimum)));
}

TGridArea TGridEditors::PanelArea(const TGridArea& cell, const TGridArea& body) const {
    const SIZE size = panel_.PreferredSize();
    const int width = size.cx + 2 * scale_(GridStyle::CellPaddingX);
    return InsideFrame(
        FitInto(body, cell, std::max(cell.Width(), width), size.cy + 2 * scale_(GridStyle::CellPaddingY)));
}

TGridArea TGridEditors::InsideFrame(const TGridArea& frame) const {
    const int across = scale_(GridStyle::CellPaddingX);
    const int down = scale_(GridStyle::CellPaddingY);
    return {frame.left + across, frame.top + down, frame.right - across, frame.bottom - down};
}

void TGridEditors::Close() {
    const HWND closed = std::exchange(open_, nullptr);
    if (closed == nullptr) {
        return;
    }
    if (GetFocus() == closed) {
        SetFocus(grid_);
    }
    ShowWindow(closed, SW_HIDE);
}

std::wstring TGridEditors::Text() const {
    if (open_ == panel_.Handle()) {
        return panel_.Value();
    }
    std::wstring text;
    ReadWindowText(open_, text);
    return text;
}

std::optional<LRESULT> TGridEditors::EditMessage(UINT message, WPARAM wordParameter) {
    switch (message) {
        case WM_GETDLGCODE:
            return DLGC_WANTALLKEYS | DLGC_WANTARROWS | DLGC_WANTCHARS;
        case WM_KEYDOWN:
        case WM_SYSKEYDOWN:
            if (const std::optional<TGridKey> key = GridKeyOf(wordParameter); key && events_.key(*key)) {
                return 0;
            }
            return std::nullopt;
        case WM_CHAR:
            if (wordParameter == 1) {  // Ctrl+A, which fields of several lines do not know
                SendMessageW(open_, EM_SETSEL, 0, -1);
                return 0;
            }
            // What follows keys that the grid has used.
            if (wordParameter == VK_RETURN || wordParameter == VK_TAB || wordParameter == VK_ESCAPE) {
                return 0;
            }
            return std::nullopt;
        default:
            return std::nullopt;
    }
}

LRESULT CALLBACK TGridEditors::EditProcedure(HWND handle, UINT message, WPARAM wordParameter,
                                             LPARAM longParameter, UINT_PTR id, DWORD_PTR data) {
    auto* editors = reinterpret_cast<TGridEditors*>(data);
    std::optional<LRESULT> answer;
    if (!RunGuarded([&] { answer = editors->EditMessage(message, wordParameter); })) {
        return 0;
    }
    if (answer) {
        return *answer;
    }
    if (message == WM_NCDESTROY) {
        RemoveWindowSubclass(handle, &TGridEditors::EditProcedure, id);
    }
    const LRESULT result = DefSubclassProc(handle, message, wordParameter, longParameter);
    if (message == WM_KILLFOCUS && editors->open_ == handle) {
        RunGuarded([&] { editors->events_.lostFocus(); });
    }
    return result;
}
