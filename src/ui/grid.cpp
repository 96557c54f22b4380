#include "ui/grid.h"

#include <windowsx.h>

#include <algorithm>

#include "ui/device_context.h"
#include "ui/grid_style.h"

namespace {

constexpr int kWheelNotch = WHEEL_DELTA;

class TPopupMenu {
public:
    TPopupMenu() : menu_(CreatePopupMenu()) {}
    TPopupMenu(const TPopupMenu&) = delete;
    TPopupMenu& operator=(const TPopupMenu&) = delete;
    ~TPopupMenu() { DestroyMenu(menu_); }

    HMENU Get() const { return menu_; }
    // The identifier of the item chosen; 0 for none.
    std::size_t Track(HWND window, POINT screenPoint) const {
        return static_cast<std::size_t>(TrackPopupMenu(menu_, TPM_RETURNCMD | TPM_RIGHTBUTTON, screenPoint.x,
                                                       screenPoint.y, 0, window, nullptr));
    }

private:
    HMENU menu_;
};

}  // namespace

TGrid::TGrid(TGridColumns& columns, TGridSource& source)
    : columns_(columns), source_(source), navigator_(source, columns, *this) {}

TGrid::~TGrid() {
    source_.SetChangeHandler({});
    Destroy();
}

bool TGrid::CreateIn(HWND parent, TGridTexts texts, TScale scale, HFONT font) {
    texts_ = std::move(texts);
    painter_.SetScale(scale, font);
    TCreateOptions options;
    options.className = L"VardekoGrid";
    options.caption = texts_.name;
    options.style = WS_CHILD | WS_VISIBLE | WS_TABSTOP | WS_CLIPCHILDREN;
    options.classStyle = CS_DBLCLKS;
    options.parent = parent;
    options.left = options.top = options.width = options.height = 0;
    if (!Create(options)) {
        return false;
    }
    TGridEditorEvents events;
    events.key = [this](TGridKey key) { return UseKey(key); };
    events.lostFocus = [this] { navigator_.TakeOver(); };
    events.chosen = [this] { navigator_.TakeOver(); };
    if (!editors_.CreateIn(Handle(), std::move(events))) {
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
    Repaint();
}

TGridArea TGrid::FocusedCellArea() const {
    return layout_.Cell(source_.CurrentRow().value_or(0), columns_.PositionOf(navigator_.FocusedColumn()));
}

void TGrid::Repaint() const {
    InvalidateRect(Handle(), nullptr, FALSE);
}

TGridView TGrid::View() const {
    const HWND focus = GetFocus();
    const bool hasFocus = focus == Handle() || (focus != nullptr && focus == editors_.Handle());
    return {columns_,
            layout_,
            source_,
            navigator_.FocusedColumn(),
            hasFocus,
            editors_.IsOpen() ? std::optional(editors_.Area()) : std::nullopt,
            drag_ == TDrag::Header ? dropPosition_ : std::nullopt,
            dragPosition_,
            thumbHovered_ || drag_ == TDrag::Thumb,
            texts_.empty};
}

void TGrid::OpenEditor(std::size_t column, const std::wstring& text, bool selectAll) {
    layout_.ScrollIntoView(*source_.CurrentRow());
    editors_.Open(columns_[column], text, selectAll, FocusedCellArea(), layout_.Body());
    Repaint();
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
    Repaint();
    if (GetFocus() == Handle()) {
        TellScreenReader(EVENT_OBJECT_FOCUS);
    }
}

void TGrid::TellScreenReader(DWORD event) const {
    const std::optional<std::size_t> cell = FocusedCell();
    NotifyWinEvent(event, Handle(), OBJID_CLIENT, cell ? static_cast<LONG>(*cell) + 1 : CHILDID_SELF);
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
    return key && UseKey(*key) ? std::optional<LRESULT>(0) : std::nullopt;
}

// The Tab key has brought the focus here: on to the first or the last cell of the row.
void TGrid::FocusReceived(HWND from) {
    if (GetKeyState(VK_TAB) < 0 && (from == nullptr || !IsChild(Handle(), from))) {
        if (GetKeyState(VK_SHIFT) < 0) {
            navigator_.EnterBackward();
        } else {
            navigator_.EnterForward();
        }
    }
    Repaint();
    TellScreenReader(EVENT_OBJECT_FOCUS);
}

void TGrid::ButtonDown(POINT point) {
    if (GetFocus() != Handle()) {
        SetFocus(Handle());
    }
    const TGridHit hit = layout_.HitTest(point.x, point.y);
    switch (hit.part) {
        case TGridPart::Cell:
            ClickCell(hit, point);
            return;
        case TGridPart::Indicator:
            source_.MoveTo(hit.row);
            return;
        case TGridPart::ColumnBorder:
            drag_ = TDrag::ColumnWidth;
            dragOffset_ = layout_.Header(hit.position).right - point.x;
            break;
        case TGridPart::Header:
            drag_ = TDrag::Header;
            dropPosition_.reset();
            dragOffset_ = point.x;
            break;
        case TGridPart::Thumb:
            drag_ = TDrag::Thumb;
            dragOffset_ = layout_.Thumb().top - point.y;
            break;
        case TGridPart::ScrollTrack:
            Scroll(point.y < layout_.Thumb().top ? -layout_.Body().Height() : layout_.Body().Height());
            return;
        case TGridPart::Nothing:
            return;
    }
    dragPosition_ = hit.position;
    SetCapture(Handle());
    Repaint();
}

void TGrid::ClickCell(const TGridHit& hit, POINT point) {
    const std::size_t column = columns_.Visible()[hit.position];
    const TGridArea cell = layout_.Cell(hit.row, hit.position);
    TGridNavigator::TSpot spot = TGridNavigator::TSpot::Elsewhere;
    if (columns_[column].editor == TGridEditor::CheckBox &&
        painter_.CheckMark(cell).Contains(point.x, point.y)) {
        spot = TGridNavigator::TSpot::CheckMark;
    } else if (columns_[column].editor == TGridEditor::ButtonText && source_.CurrentRow() == hit.row &&
               painter_.Button(cell).Contains(point.x, point.y)) {
        spot = TGridNavigator::TSpot::Button;
    }
    navigator_.Click(hit.row, column, spot);
    TellScreenReader(EVENT_OBJECT_STATECHANGE);
}

void TGrid::MouseMoved(POINT point) {
    const TGridMetrics& metrics = layout_.Metrics();
    switch (drag_) {
        case TDrag::ColumnWidth:
            columns_.Resize(dragPosition_, point.x + dragOffset_ - layout_.Header(dragPosition_).left,
                            layout_.ColumnSpace(), metrics.minimumColumnWidth);
            Arrange();
            break;
        case TDrag::Header:
            if (dropPosition_ || std::abs(point.x - dragOffset_) > GetSystemMetrics(SM_CXDRAG)) {
                dropPosition_ = layout_.DropPosition(point.x);
                Repaint();
            }
            break;
        case TDrag::Thumb:
            if (layout_.ScrollToThumb(point.y + dragOffset_)) {
                Repaint();
            }
            break;
        case TDrag::None: {
            const bool hovered = layout_.HitTest(point.x, point.y).part == TGridPart::Thumb;
            if (hovered != std::exchange(thumbHovered_, hovered)) {
                TRACKMOUSEEVENT track{sizeof(track), TME_LEAVE, Handle(), 0};
                TrackMouseEvent(&track);
                Repaint();
            }
            break;
        }
    }
}

void TGrid::ButtonUp() {
    if (drag_ == TDrag::Header && dropPosition_ && *dropPosition_ != dragPosition_) {
        columns_.Move(dragPosition_, *dropPosition_);
        Arrange();
    }
    if (drag_ != TDrag::None) {
        drag_ = TDrag::None;
        ReleaseCapture();
        Repaint();
    }
}

void TGrid::Scroll(int distance) {
    navigator_.TakeOver();
    if (layout_.ScrollTo(layout_.ScrollPosition() + distance)) {
        Repaint();
    }
}

void TGrid::Wheel(int delta) {
    UINT lines = 3;
    SystemParametersInfoW(SPI_GETWHEELSCROLLLINES, 0, &lines, 0);
    const int step = lines == WHEEL_PAGESCROLL ? layout_.Body().Height()
                                               : static_cast<int>(lines) * painter_.MinimumRowHeight();
    // Fine wheels send parts of a notch.
    wheelRest_ += delta * step;
    const int distance = wheelRest_ / kWheelNotch;
    wheelRest_ %= kWheelNotch;
    if (layout_.HasScrollBar()) {
        Scroll(-distance);
    }
}

// A menu for the row at the point, or for the columns when it lies in the header.
void TGrid::ShowMenu(POINT screenPoint) {
    navigator_.TakeOver();
    POINT point = screenPoint;
    ScreenToClient(Handle(), &point);
    if (screenPoint.x == -1 && screenPoint.y == -1) {  // by the keyboard
        if (!source_.CurrentRow()) {
            return;
        }
        const TGridArea cell = FocusedCellArea();
        point = {cell.left, cell.bottom - 1};
        screenPoint = point;
        ClientToScreen(Handle(), &screenPoint);
    }
    const TGridHit hit = layout_.HitTest(point.x, point.y);
    if (hit.part == TGridPart::Header || hit.part == TGridPart::ColumnBorder) {
        ShowColumnMenu(screenPoint);
    } else if (hit.part == TGridPart::Cell || hit.part == TGridPart::Indicator) {
        source_.MoveTo(hit.row);
        const TPopupMenu menu;
        AppendMenuW(menu.Get(), MF_STRING, 1, (texts_.deleteRow + L"\tEntf").c_str());
        if (menu.Track(Handle(), screenPoint) == 1) {
            source_.AskDeleteRow();
        }
    }
}

void TGrid::ShowColumnMenu(POINT screenPoint) {
    const TPopupMenu menu;
    const auto isVisible = [this](std::size_t index) {
        return columns_.PositionOf(index) < columns_.Visible().size();
    };
    for (std::size_t index = 0; index < columns_.Count(); ++index) {
        AppendMenuW(menu.Get(), MF_STRING | (isVisible(index) ? MF_CHECKED : 0), index + 1,
                    columns_[index].caption.c_str());
    }
    if (const std::size_t chosen = menu.Track(Handle(), screenPoint); chosen != 0) {
        columns_.SetVisible(chosen - 1, !isVisible(chosen - 1));
        ColumnsChanged();
    }
}

bool TGrid::SetPointer() const {
    POINT point{};
    GetCursorPos(&point);
    ScreenToClient(Handle(), &point);
    if (drag_ != TDrag::ColumnWidth && layout_.HitTest(point.x, point.y).part != TGridPart::ColumnBorder) {
        return false;
    }
    SetCursor(LoadCursorW(nullptr, IDC_SIZEWE));
    return true;
}

std::optional<LRESULT> TGrid::MouseMessage(UINT message, POINT point) {
    switch (message) {
        case WM_LBUTTONDOWN:
            ButtonDown(point);
            return 0;
        case WM_LBUTTONDBLCLK:
            if (const TGridHit hit = layout_.HitTest(point.x, point.y); hit.part == TGridPart::Cell) {
                ClickCell(hit, point);
            } else {
                ButtonDown(point);
            }
            return 0;
        case WM_MOUSEMOVE:
            MouseMoved(point);
            return 0;
        default:
            ButtonUp();
            return 0;
    }
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
    description.row = L"Zeile " + std::to_wstring(row + 1) + L" von " + std::to_wstring(source_.RowCount());
    description.isCheckBox = columns_[column].editor == TGridEditor::CheckBox;
    description.isChecked = description.isCheckBox && source_.Checked(row, column);
    description.isVisible = row >= layout_.FirstVisibleRow() && row < layout_.EndOfVisibleRows();
    const TGridArea area = layout_.Cell(row, position);
    description.area = {area.left, area.top, area.right, area.bottom};
    MapWindowPoints(Handle(), nullptr, reinterpret_cast<POINT*>(&description.area), 2);
    return description;
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
        case WM_PAINT: {
            const TPaintContext paint(Handle());
            painter_.Paint(paint.Get(), paint.Client(), View());
            return 0;
        }
        case WM_ERASEBKGND:
            return TRUE;
        case WM_CTLCOLOREDIT:
            SetTextColor(reinterpret_cast<HDC>(wordParameter), ColorRefOf(Theme::Text));
            SetBkColor(reinterpret_cast<HDC>(wordParameter), ColorRefOf(Theme::ControlGround));
            SetDCBrushColor(reinterpret_cast<HDC>(wordParameter), ColorRefOf(Theme::ControlGround));
            return reinterpret_cast<LRESULT>(GetStockObject(DC_BRUSH));
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
        case WM_CAPTURECHANGED:
            drag_ = TDrag::None;
            Repaint();
            return 0;
        case WM_MOUSELEAVE:
            if (std::exchange(thumbHovered_, false)) {
                Repaint();
            }
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
            if (static_cast<LONG>(longParameter) != OBJID_CLIENT) {
                return std::nullopt;
            }
            if (accessible_ == nullptr) {
                accessible_ = new TGridAccessible(Handle(), *this);
            }
            return LresultFromObject(IID_IAccessible, wordParameter, accessible_);
        case WM_DESTROY:
            if (TGridAccessible* accessible = std::exchange(accessible_, nullptr)) {
                accessible->Disconnect();
                accessible->Release();
            }
            return 0;
        default:
            return std::nullopt;
    }
}
