// What the mouse does in a grid.
#include <algorithm>
#include <utility>

#include "texts/ui_texts.h"
#include "ui/grid.h"
#include "ui/popup_menu.h"

namespace {

constexpr int kWheelNotch = WHEEL_DELTA;

}  // namespace

void TGrid::ButtonDown(POINT point) {
    // Before the focus comes: an edit that ends now may change the heights of rows.
    const TGridHit hit = layout_.HitTest(point.x, point.y);
    const TGridNavigator::TSpot spot = SpotAt(hit, point);
    if (GetFocus() != Handle()) {
        SetFocus(Handle());
    }
    switch (hit.part) {
        case TGridPart::Cell:
            navigator_.Click(hit.row, columns_.Visible()[hit.position], spot);
            TellScreenReader(EVENT_OBJECT_STATECHANGE);
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
        case TGridPart::Nothing:
            return;
    }
    dragPosition_ = hit.position;
    SetCapture(Handle());
    Repaint();
}

TGridNavigator::TSpot TGrid::SpotAt(const TGridHit& hit, POINT point) const {
    if (hit.part == TGridPart::Cell) {
        const TGridEditor editor = columns_[columns_.Visible()[hit.position]].editor;
        const TGridArea cell = layout_.Cell(hit.row, hit.position);
        if (editor == TGridEditor::CheckBox) {  // all of the cell: the mark is small
            return TGridNavigator::TSpot::CheckMark;
        }
        if (editor == TGridEditor::ButtonText && source_.CurrentRow() == hit.row &&
            painter_.Button(cell).Contains(point.x, point.y)) {
            return TGridNavigator::TSpot::Button;
        }
    }
    return TGridNavigator::TSpot::Elsewhere;
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
        case TDrag::None:
            PointAt(layout_.HitTest(point.x, point.y), point);
            break;
    }
}

// The pointer has come to another part of the grid, or has left it.
void TGrid::PointAt(const TGridHit& hit, POINT point) {
    if (hit == pointedAt_) {
        return;
    }
    pointedAt_ = hit;
    TRACKMOUSEEVENT track{sizeof(track), TME_LEAVE, Handle(), 0};
    TrackMouseEvent(&track);
    toolTips_.SetHint(Handle(), Handle(), HintAt(point));
    Repaint();
}

std::wstring TGrid::HintAt(POINT point) const {
    const TGridHit hit = layout_.HitTest(point.x, point.y);
    const auto column = [&] { return columns_.Visible()[hit.position]; };
    switch (hit.part) {
        case TGridPart::Header:
            return columns_[column()].hint;
        case TGridPart::Indicator:
            return source_.Warning(hit.row);
        case TGridPart::Cell: {
            const std::wstring text = CellCaption(hit.row, column());
            const int width = layout_.Cell(hit.row, hit.position).Width();
            return painter_.ShowsWhole(text, columns_[column()], width) ? std::wstring() : text;
        }
        default:
            return {};
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

void TGrid::ScrollTo(int position) {
    navigator_.TakeOver();
    if (layout_.ScrollTo(position)) {
        ShowRows();
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
        ScrollTo(layout_.ScrollRange().position - distance);
    }
}

// A menu for the row at the point, or for the columns when it lies in the header.
void TGrid::ShowMenu(POINT screenPoint) {
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
    // What is meant is what was seen: taking an edit over can move the rows.
    const TGridHit hit = layout_.HitTest(point.x, point.y);
    navigator_.TakeOver();
    if (hit.part == TGridPart::Header || hit.part == TGridPart::ColumnBorder) {
        ShowColumnMenu(screenPoint);
    } else if (hit.part == TGridPart::Cell || hit.part == TGridPart::Indicator) {
        source_.MoveTo(hit.row);
        const TPopupMenu menu;
        AppendMenuW(menu.Get(), MF_STRING, 1, (texts_.deleteRow + L"\t" + UiTexts::DeleteKey).c_str());
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
        case WM_LBUTTONDBLCLK:
            ButtonDown(point);
            return 0;
        case WM_MOUSEMOVE:
            MouseMoved(point);
            return 0;
        default:
            ButtonUp();
            return 0;
    }
}
