#include "ui/grid.h"

#include <windowsx.h>

#include <algorithm>

#include "texts/ui_texts.h"
#include "ui/device_context.h"

TGrid::TGrid(TGridColumns& columns, TGridSource& source)
    : columns_(columns), source_(source), navigator_(source, columns, *this) {}

TGrid::~TGrid() {
    source_.SetChangeHandler({});
    Destroy();
}

bool TGrid::CreateIn(HWND parent, TGridTexts texts, TScale scale, HFONT font) {
    texts_ = std::move(texts);
    painter_.SetScale(scale, font);
    if (!CreateControl(parent, L"VardekoGrid", WS_VISIBLE | WS_TABSTOP | WS_CLIPCHILDREN, 0, CS_DBLCLKS)) {
        return false;
    }
    SetWindowTextW(Handle(), texts_.name.c_str());
    TGridEditorEvents events;
    events.key = [this](TGridKey key) { return UseKey(key); };
    events.lostFocus = [this] { navigator_.TakeOver(); };
    events.chosen = [this] { navigator_.TakeOver(); };
    if (!editors_.CreateIn(Handle(), std::move(events)) ||
        !scrollBar_.CreateIn(Handle(), [this](int position) { ScrollTo(position); })) {
        Destroy();
        return false;
    }
    editors_.SetScale(scale, font);
    source_.SetChangeHandler([this] { SourceChanged(); });
    SourceChanged();
    return true;
}

void TGrid::SetScale(TScale scale, HFONT font) {
    navigator_.TakeOver();
    painter_.SetScale(scale, font);
    editors_.SetScale(scale, font);
    Arrange();
}

void TGrid::ColumnsChanged() {
    navigator_.ColumnsChanged();
    Arrange();
}

std::wstring TGrid::CellCaption(std::size_t row, std::size_t column) const {
    return columns_[column].editor == TGridEditor::CheckBox
               ? std::wstring()
               : GridCellCaption(columns_[column], source_.Text(row, column));
}

void TGrid::SourceChanged() {
    if (!Exists()) {
        return;
    }
    navigator_.SourceChanged();
    Arrange();
    const std::optional<std::size_t> current = source_.CurrentRow();
    const auto key = current ? std::optional(source_.RowKey(*current)) : std::nullopt;
    if (key != shownRow_) {
        shownRow_ = key;
        FocusedCellChanged();
    }
}

int TGrid::MeasureRow(std::size_t row, const std::vector<int>& widths) const {
    int height = painter_.MinimumRowHeight();
    for (std::size_t position = 0; position < widths.size(); ++position) {
        const std::size_t column = columns_.Visible()[position];
        if (columns_[column].editor != TGridEditor::CheckBox) {
            height = std::max(height, painter_.TextCellHeight(CellCaption(row, column), columns_[column],
                                                              widths[position]));
        }
    }
    return height;
}

void TGrid::Arrange() {
    RECT client{};
    GetClientRect(Handle(), &client);
    layout_.Arrange(
        client.right, client.bottom, painter_.Metrics(), columns_, source_.RowCount(),
        [this](std::size_t row, const std::vector<int>& widths) { return MeasureRow(row, widths); });
    if (navigator_.Editing()) {
        editors_.Place(FocusedCellArea(), layout_.Body());
    }
    ShowRows();
}

// To be called when the layout has changed or was scrolled.
void TGrid::ShowRows() {
    const TGridArea bar = layout_.ScrollBar();
    scrollBar_.Show(layout_.ScrollRange(), {bar.left, bar.top, bar.right, bar.bottom});
    Repaint();
}

TGridArea TGrid::FocusedCellArea() const {
    return layout_.Cell(source_.CurrentRow().value_or(0), columns_.PositionOf(navigator_.FocusedColumn()));
}

void TGrid::Paint() {
    const TPaintContext paint(Handle());
    painter_.Paint(paint.Get(), paint.Client(), View());
}

TGridView TGrid::View() const {
    const HWND focus = GetFocus();
    const bool hasFocus = focus == Handle() || (focus != nullptr && focus == editors_.Handle());
    const bool onRow = pointedAt_.part == TGridPart::Cell || pointedAt_.part == TGridPart::Indicator;
    return {columns_,
            layout_,
            source_,
            navigator_.FocusedColumn(),
            hasFocus,
            editors_.IsOpen() ? std::optional(editors_.Area()) : std::nullopt,
            drag_ == TDrag::Header ? dropPosition_ : std::nullopt,
            dragPosition_,
            onRow ? std::optional(pointedAt_.row) : std::nullopt,
            pointedAt_.part == TGridPart::Header ? std::optional(pointedAt_.position) : std::nullopt,
            texts_.empty};
}

void TGrid::OpenEditor(std::size_t column, const std::wstring& text, bool selectAll) {
    layout_.ScrollIntoView(*source_.CurrentRow());
    editors_.Open(columns_[column], text, selectAll, FocusedCellArea(), layout_.Body());
    ShowRows();
}

void TGrid::CloseEditor() {
    editors_.Close();
    Repaint();
}

void TGrid::FocusedCellChanged() {
    if (const std::optional<std::size_t> current = source_.CurrentRow()) {
        layout_.ScrollIntoView(*current);
        if (navigator_.Editing()) {
            editors_.Place(FocusedCellArea(), layout_.Body());
        }
    }
    ShowRows();
    if (GetFocus() == Handle()) {
        TellScreenReader(EVENT_OBJECT_FOCUS);
    }
}

void TGrid::TellScreenReader(DWORD event) const {
    const std::optional<std::size_t> cell = FocusedCell();
    NotifyWinEvent(event, Handle(), OBJID_CLIENT,
                   cell ? TGridAccessible::ChildOfCell(*this, *cell) : CHILDID_SELF);
}

bool TGrid::UseKey(TGridKey key) {
    switch (navigator_.Key(key)) {
        case TGridAnswer::LeaveForward:
            LeaveGrid(true);
            return true;
        case TGridAnswer::LeaveBackward:
            LeaveGrid(false);
            return true;
        case TGridAnswer::Used:
            return true;
        case TGridAnswer::NotUsed:
            break;
    }
    return false;
}

void TGrid::LeaveGrid(bool forward) {
    const HWND root = GetAncestor(Handle(), GA_ROOT);
    if (const HWND next = GetNextDlgTabItem(root, Handle(), !forward); next != nullptr) {
        SetFocus(next);
    }
}

std::optional<LRESULT> TGrid::KeyMessage(UINT message, WPARAM wordParameter) {
    if (message == WM_CHAR) {
        if (navigator_.Character(static_cast<wchar_t>(wordParameter))) {
            TellScreenReader(EVENT_OBJECT_STATECHANGE);
        }
        return 0;
    }
    if (wordParameter == VK_TAB && GetKeyState(VK_CONTROL) < 0) {
        LeaveGrid(GetKeyState(VK_SHIFT) >= 0);
        return 0;
    }
    const std::optional<TGridKey> key = GridKeyOf(wordParameter);
    if (key && UseKey(*key)) {
        return 0;
    }
    if (key == TGridKey::Escape) {  // the window's, as in every other control
        PostMessageW(GetAncestor(Handle(), GA_ROOT), WM_COMMAND, IDCANCEL, 0);
        return 0;
    }
    return std::nullopt;
}

// The Tab key has brought the focus here: on to the first or the last cell of the row.
void TGrid::FocusReceived(HWND from) {
    if (GetKeyState(VK_TAB) < 0 && GetKeyState(VK_MENU) >= 0 &&
        (from == nullptr || !IsChild(Handle(), from))) {
        if (GetKeyState(VK_SHIFT) < 0) {
            navigator_.EnterBackward();
        } else {
            navigator_.EnterForward();
        }
    }
    Repaint();
    TellScreenReader(EVENT_OBJECT_FOCUS);
}

std::size_t TGrid::CellCount() const {
    return source_.RowCount() * columns_.Visible().size();
}

std::optional<std::size_t> TGrid::FocusedCell() const {
    const std::optional<std::size_t> row = source_.CurrentRow();
    if (!row) {
        return std::nullopt;
    }
    return *row * columns_.Visible().size() + columns_.PositionOf(navigator_.FocusedColumn());
}

TGridCellDescription TGrid::DescribeCell(std::size_t cell) const {
    const std::size_t row = cell / columns_.Visible().size();
    const std::size_t position = cell % columns_.Visible().size();
    const std::size_t column = columns_.Visible()[position];
    TGridCellDescription description;
    description.name = columns_[column].caption;
    description.value = CellCaption(row, column);
    description.row = UiTexts::RowOf(row + 1, source_.RowCount());
    description.isCheckBox = columns_[column].editor == TGridEditor::CheckBox;
    description.isChecked = description.isCheckBox && source_.Checked(row, column);
    description.isVisible = row >= layout_.FirstVisibleRow() && row < layout_.EndOfVisibleRows();
    const TGridArea area = layout_.Cell(row, position);
    description.area = {area.left, area.top, area.right, area.bottom};
    MapWindowPoints(Handle(), nullptr, reinterpret_cast<POINT*>(&description.area), 2);
    return description;
}

// By the first text in it.
std::wstring TGrid::RowName(std::size_t row) const {
    for (const std::size_t column : columns_.Visible()) {
        if (const std::wstring text = CellCaption(row, column); !text.empty()) {
            return UiTexts::RowOf(row + 1, source_.RowCount()) + L": " + text;
        }
    }
    return UiTexts::RowOf(row + 1, source_.RowCount());
}

std::optional<std::size_t> TGrid::CellAt(POINT screenPoint) const {
    ScreenToClient(Handle(), &screenPoint);
    const TGridHit hit = layout_.HitTest(screenPoint.x, screenPoint.y);
    return hit.part == TGridPart::Cell ? std::optional(hit.row * columns_.Visible().size() + hit.position)
                                       : std::nullopt;
}

void TGrid::SelectCell(std::size_t cell) {
    const std::size_t count = columns_.Visible().size();
    navigator_.Focus(cell / count, columns_.Visible()[cell % count]);
}

void TGrid::DoCellAction(std::size_t cell) {
    SelectCell(cell);
    UseKey(columns_[navigator_.FocusedColumn()].editor == TGridEditor::CheckBox ? TGridKey::Space
                                                                                : TGridKey::Edit);
}

std::optional<LRESULT> TGrid::HandleMessage(UINT message, WPARAM wordParameter, LPARAM longParameter) {
    switch (message) {
        case WM_SIZE:
            Arrange();
            return 0;
        case WM_CTLCOLOREDIT:
            return ControlColours(wordParameter, Theme().text, Theme().controlGround);
        case WM_GETDLGCODE:
            return DLGC_WANTALLKEYS | DLGC_WANTARROWS | DLGC_WANTCHARS;
        case WM_KEYDOWN:
        case WM_SYSKEYDOWN:
        case WM_CHAR:
            return KeyMessage(message, wordParameter);
        case WM_SETFOCUS:
            FocusReceived(reinterpret_cast<HWND>(wordParameter));
            return 0;
        case WM_KILLFOCUS:
            Repaint();
            return 0;
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK:
        case WM_MOUSEMOVE:
        case WM_LBUTTONUP:
            return MouseMessage(message, {GET_X_LPARAM(longParameter), GET_Y_LPARAM(longParameter)});
        case WM_MOUSELEAVE:
            PointAt({}, {-1, -1});
            return 0;
        case WM_CAPTURECHANGED:
            drag_ = TDrag::None;
            Repaint();
            return 0;
        case WM_CONTEXTMENU:
            ShowMenu({GET_X_LPARAM(longParameter), GET_Y_LPARAM(longParameter)});
            return 0;
        case WM_MOUSEWHEEL:
            Wheel(GET_WHEEL_DELTA_WPARAM(wordParameter));
            return 0;
        case WM_SETCURSOR:
            return LOWORD(longParameter) == HTCLIENT && reinterpret_cast<HWND>(wordParameter) == Handle() &&
                           SetPointer()
                       ? std::optional<LRESULT>(TRUE)
                       : std::nullopt;
        case WM_GETOBJECT:
            return accessible_.Answer(Handle(), *this, wordParameter, longParameter);
        case WM_DESTROY:
            accessible_.Part();
            return 0;
        default:
            return TDrawnControl::HandleMessage(message, wordParameter, longParameter);
    }
}
