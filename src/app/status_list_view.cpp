#include "app/status_list_view.h"

#include <windowsx.h>

#include <algorithm>
#include <cwchar>

#include "texts/main_texts.h"
#include "ui/clipboard.h"
#include "ui/dark_mode.h"
#include "ui/device_context.h"
#include "ui/shorten_path.h"
#include "ui/window_scale.h"

namespace {

// Sizes at a scale of 100 %.
constexpr int kRowPadding = 6;
constexpr int kTextMargin = 8;
constexpr int kErrorMargin = 4;
constexpr int kReasonGap = 12;
constexpr int kSelectionBar = 4;

bool IsKeyDown(int key) {
    return GetKeyState(key) < 0;
}

int WidthOf(HDC context, std::wstring_view text) {
    SIZE size{};
    GetTextExtentPoint32W(context, text.data(), static_cast<int>(text.size()), &size);
    return size.cx;
}

void DrawPart(HDC context, const std::wstring& text, RECT area, TColour colour) {
    SetTextColor(context, ColorRefOf(colour));
    DrawTextW(context, text.c_str(), static_cast<int>(text.size()), &area,
              DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS);
}

}  // namespace

bool TStatusListView::CreateIn(HWND parent, int id, TScale scale, HFONT font) {
    handle_ = CreateWindowExW(0, WC_LISTVIEWW, MainTexts::StatusList,
                              WS_CHILD | WS_VISIBLE | WS_CLIPSIBLINGS | WS_TABSTOP | WS_GROUP | LVS_REPORT |
                                  LVS_OWNERDATA | LVS_NOCOLUMNHEADER | LVS_SHOWSELALWAYS | LVS_NOSORTHEADER,
                              0, 0, 0, 0, parent, reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)),
                              GetModuleHandleW(nullptr), nullptr);
    if (handle_ == nullptr) {
        return false;
    }
    UseDarkScrollBars(handle_);
    const DWORD style = LVS_EX_DOUBLEBUFFER | LVS_EX_FULLROWSELECT;
    SendMessageW(handle_, LVM_SETEXTENDEDLISTVIEWSTYLE, style, static_cast<LPARAM>(style));
    LVCOLUMNW column{};
    column.mask = LVCF_WIDTH;
    SendMessageW(handle_, LVM_INSERTCOLUMNW, 0, reinterpret_cast<LPARAM>(&column));
    SetScale(scale, font);
    SetWindowSubclass(handle_, &TStatusListView::ListProcedure, 2, reinterpret_cast<DWORD_PTR>(this));
    scrollBar_.SetMarks([this](int first, int behind) { return HasErrorIn(first, behind); });
    return scrollBar_.AttachTo(handle_, [this](int position) {
        ScrollBy(position - static_cast<int>(SendMessageW(handle_, LVM_GETTOPINDEX, 0, 0)));
    });
}

RECT TStatusListView::RowArea(int row) const {
    RECT area{};
    area.left = LVIR_BOUNDS;
    SendMessageW(handle_, LVM_GETITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&area));
    // The control leaves some pixels free on the left.
    area.left = 0;
    return area;
}

int TStatusListView::RowHeight() const {
    const RECT row = RowArea(0);
    return row.bottom - row.top;
}

void TStatusListView::ScrollBy(int rows) {
    SendMessageW(handle_, LVM_SCROLL, 0, static_cast<LPARAM>(rows) * RowHeight());
}

void TStatusListView::SetScale(TScale scale, HFONT font) {
    scale_ = scale;
    font_ = font;
    SendMessageW(handle_, WM_SETFONT, reinterpret_cast<WPARAM>(font), TRUE);
    const HIMAGELIST height = ImageList_Create(1, TextHeight(font) + scale(kRowPadding), ILC_COLOR, 1, 1);
    // The control releases the list it has at its own end, and a replaced one is ours.
    SendMessageW(handle_, LVM_SETIMAGELIST, LVSIL_SMALL, reinterpret_cast<LPARAM>(height));
    if (rowHeight_ != nullptr) {
        ImageList_Destroy(rowHeight_);
    }
    rowHeight_ = height;
    SendMessageW(handle_, LVM_SETBKCOLOR, 0, static_cast<LPARAM>(ColorRefOf(Theme().controlGround)));
    SendMessageW(handle_, LVM_SETTEXTBKCOLOR, 0, static_cast<LPARAM>(ColorRefOf(Theme().controlGround)));
    SendMessageW(handle_, LVM_SETTEXTCOLOR, 0, static_cast<LPARAM>(ColorRefOf(Theme().fileNameRow.text)));
    FitColumn();
}

void TStatusListView::Place(const RECT& area) {
    PlaceWindow(handle_, area);
    FitColumn();
}

void TStatusListView::FitColumn() {
    RECT client{};
    GetClientRect(handle_, &client);
    if (SendMessageW(handle_, LVM_GETCOLUMNWIDTH, 0, 0) != client.right) {
        SendMessageW(handle_, LVM_SETCOLUMNWIDTH, 0, client.right);
    }
}

void TStatusListView::ShowChanges() {
    const int rows = static_cast<int>(model_.RowCount());
    if (handle_ == nullptr) {
        return;
    }
    if (shownGeneration_ != model_.Generation()) {
        shownGeneration_ = model_.Generation();
        shownRows_ = 0;
        SendMessageW(handle_, LVM_SETITEMCOUNT, 0, 0);
        selection_.clear();
        selectionChanged_ = false;
    }
    if (rows != shownRows_) {
        ShowNewRows(rows - shownRows_);
    }
}

// Rows that came in since the last ShowChanges are not on the screen yet.
std::optional<std::size_t> TStatusListView::ModelRow(int row) const {
    if (row < 0 || row >= shownRows_ || shownGeneration_ != model_.Generation()) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(row) + model_.RowCount() - static_cast<std::size_t>(shownRows_);
}

void TStatusListView::ShowNewRows(int count) {
    if (selectionChanged_) {
        ReadSelection();
    }
    const int top = static_cast<int>(SendMessageW(handle_, LVM_GETTOPINDEX, 0, 0));
    const int mark = static_cast<int>(SendMessageW(handle_, LVM_GETSELECTIONMARK, 0, 0));
    const int focused = FocusedRow();
    const bool wasEmpty = shownRows_ == 0;
    shownRows_ += count;
    ShowHintOf(-1);
    // While the newest row is in sight the list shows the newest rows; further down, and while the user looks
    // at a row of his choice, it stays where it is.
    const bool follows = wasEmpty || (top == 0 && !HasSelection());
    SendMessageW(handle_, LVM_SETITEMCOUNT, static_cast<WPARAM>(shownRows_),
                 LVSICF_NOSCROLL | LVSICF_NOINVALIDATEALL);
    MoveSelection(count);
    if (focused >= 0) {
        SetRowState(focused + count, LVIS_FOCUSED, LVIS_FOCUSED);
    }
    if (mark >= 0) {
        SendMessageW(handle_, LVM_SETSELECTIONMARK, 0, mark + count);
    }
    // Whatever the changes of state have done to it.
    const int wanted = follows ? 0 : top + count;
    if (const int now = static_cast<int>(SendMessageW(handle_, LVM_GETTOPINDEX, 0, 0)); now != wanted) {
        ScrollBy(wanted - now);
    }
    FitColumn();
    InvalidateRect(handle_, nullptr, wasEmpty);
    selectionChanged_ = false;
}

// Only after the user has changed the selection: asking for a million selected rows takes its time.
void TStatusListView::ReadSelection() {
    selection_.clear();
    if (SendMessageW(handle_, LVM_GETSELECTEDCOUNT, 0, 0) == shownRows_) {
        selection_.emplace_back(0, shownRows_);
        return;
    }
    int row = -1;
    for (;;) {
        row =
            static_cast<int>(SendMessageW(handle_, LVM_GETNEXTITEM, static_cast<WPARAM>(row), LVNI_SELECTED));
        if (row < 0) {
            return;
        }
        if (!selection_.empty() && selection_.back().second == row) {
            ++selection_.back().second;
        } else {
            selection_.emplace_back(row, row + 1);
        }
    }
}

// Of every range only its ends change: as many rows at each as came in above.
void TStatusListView::MoveSelection(int count) {
    for (const auto& [first, behind] : selection_) {
        for (int row = first; row < std::min(first + count, behind); ++row) {
            SetRowState(row, 0, LVIS_SELECTED);
        }
    }
    for (auto& [first, behind] : selection_) {
        for (int row = std::max(behind, first + count); row < behind + count; ++row) {
            SetRowState(row, LVIS_SELECTED, LVIS_SELECTED);
        }
        first += count;
        behind += count;
    }
}

void TStatusListView::SetRowState(int row, UINT state, UINT mask) {
    LVITEMW item{};
    item.state = state;
    item.stateMask = mask;
    SendMessageW(handle_, LVM_SETITEMSTATE, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
}

std::vector<std::size_t> TStatusListView::SelectedRows() const {
    std::vector<std::size_t> rows;
    LRESULT row = -1;
    while ((row = SendMessageW(handle_, LVM_GETNEXTITEM, static_cast<WPARAM>(row), LVNI_SELECTED)) >= 0) {
        rows.push_back(static_cast<std::size_t>(row));
    }
    return rows;
}

void TStatusListView::SelectAll() {
    SetRowState(-1, LVIS_SELECTED, LVIS_SELECTED);
}

void TStatusListView::CopySelection() {
    ShowChanges();  // rows are counted from the top
    if (const std::wstring text = model_.TextOfRows(SelectedRows()); !text.empty()) {
        CopyToClipboard(handle_, text);
    }
}

int TStatusListView::FocusedRow() const {
    return static_cast<int>(SendMessageW(handle_, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_FOCUSED));
}

std::optional<std::size_t> TStatusListView::CurrentRow() const {
    const int row = FocusedRow();
    if (row < 0 || SendMessageW(handle_, LVM_GETITEMSTATE, static_cast<WPARAM>(row), LVIS_SELECTED) == 0) {
        return std::nullopt;
    }
    return ModelRow(row);
}

bool TStatusListView::SelectError(bool below) {
    ShowChanges();  // rows are counted from the top
    const std::ptrdiff_t from = FocusedRow();
    const auto found = below || from < 0 ? model_.ErrorBelow(from) : model_.ErrorAbove(from);
    if (!found) {
        return false;
    }
    const int row = static_cast<int>(*found);
    SetRowState(-1, 0, LVIS_SELECTED);
    SetRowState(row, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
    SendMessageW(handle_, LVM_SETSELECTIONMARK, 0, row);
    SendMessageW(handle_, LVM_ENSUREVISIBLE, static_cast<WPARAM>(row), FALSE);
    return true;
}

bool TStatusListView::HasErrorIn(int first, int behind) const {
    const auto found = model_.ErrorBelow(static_cast<std::ptrdiff_t>(first) - 1);
    return found && static_cast<int>(*found) < behind;
}

// The whole text and the reason of a row that is cut; nothing for -1. Shown by the tool tip once the pointer
// rests.
void TStatusListView::ShowHintOf(int row) {
    if (row == hintedRow_) {
        return;
    }
    hintedRow_ = row;
    std::wstring hint;
    if (const auto modelRow = ModelRow(row)) {
        const std::wstring text = model_.Text(*modelRow);
        const std::wstring reason = model_.Reason(*modelRow);
        const int gap = reason.empty() ? 0 : scale_(kReasonGap);
        const RECT area = RowArea(row);
        if (TextWidth(font_, text) + gap + TextWidth(font_, reason) > area.right - 2 * scale_(kTextMargin)) {
            hint = HintOfRow(text, reason);
        }
    }
    hints_.SetHint(GetParent(handle_), handle_, hint);
}

LRESULT CALLBACK TStatusListView::ListProcedure(HWND handle, UINT message, WPARAM wordParameter,
                                                LPARAM longParameter, UINT_PTR id, DWORD_PTR data) {
    auto* view = reinterpret_cast<TStatusListView*>(data);
    if (message == WM_MOUSEMOVE) {
        LVHITTESTINFO hit{};
        hit.pt = {GET_X_LPARAM(longParameter), GET_Y_LPARAM(longParameter)};
        const auto row =
            static_cast<int>(SendMessageW(handle, LVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit)));
        RunGuarded([&] { view->ShowHintOf(row); });
    } else if (message == WM_NCDESTROY) {
        RemoveWindowSubclass(handle, &TStatusListView::ListProcedure, id);
    }
    return DefSubclassProc(handle, message, wordParameter, longParameter);
}

POINT TStatusListView::MenuPoint() const {
    RECT client{};
    GetClientRect(handle_, &client);
    POINT point{scale_(kTextMargin), 0};
    if (const int focused = FocusedRow(); focused >= 0) {
        if (const RECT area = RowArea(focused); area.top >= 0 && area.bottom <= client.bottom) {
            point.y = area.bottom;
        }
    }
    ClientToScreen(handle_, &point);
    return point;
}

std::optional<LRESULT> TStatusListView::HandleNotification(NMHDR& notification) {
    switch (notification.code) {
        case LVN_GETDISPINFOW:
            FillDisplayInformation(reinterpret_cast<NMLVDISPINFOW&>(notification));
            return 0;
        case NM_DBLCLK:
            if (OnOpenRow) {
                OnOpenRow();
            }
            return 0;
        case LVN_ODFINDITEMW:
            return -1;  // a letter typed leads to no row
        case NM_CUSTOMDRAW:
            return CustomDraw(reinterpret_cast<const NMLVCUSTOMDRAW&>(notification));
        case LVN_ITEMCHANGED:
        case LVN_ODSTATECHANGED:
            selectionChanged_ = true;
            return 0;
        case LVN_KEYDOWN: {
            const WORD key = reinterpret_cast<const NMLVKEYDOWN&>(notification).wVKey;
            if (IsKeyDown(VK_CONTROL) && !IsKeyDown(VK_MENU)) {
                if (key == 'A') {
                    SelectAll();
                } else if (key == 'C' || key == VK_INSERT) {
                    CopySelection();
                }
            }
            return 0;
        }
        default:
            return std::nullopt;
    }
}

void TStatusListView::FillDisplayInformation(NMLVDISPINFOW& information) const {
    LVITEMW& item = information.item;
    if ((item.mask & LVIF_TEXT) == 0 || item.pszText == nullptr || item.cchTextMax <= 0) {
        return;
    }
    std::wstring text;
    if (const auto row = ModelRow(item.iItem)) {
        text = model_.Text(*row);
        if (const std::wstring reason = model_.Reason(*row); !reason.empty()) {
            text += L": " + reason;
        }
    }
    const std::size_t length = std::min(text.size(), static_cast<std::size_t>(item.cchTextMax) - 1);
    std::wmemcpy(item.pszText, text.data(), length);
    item.pszText[length] = 0;
}

LRESULT TStatusListView::CustomDraw(const NMLVCUSTOMDRAW& draw) {
    switch (draw.nmcd.dwDrawStage) {
        case CDDS_PREPAINT:
            return CDRF_NOTIFYITEMDRAW | (shownRows_ == 0 ? CDRF_NOTIFYPOSTPAINT : 0);
        case CDDS_POSTPAINT:
            PaintEmptyText(draw.nmcd.hdc);
            return CDRF_DODEFAULT;
        case CDDS_ITEMPREPAINT:
            DrawRow(draw.nmcd.hdc, static_cast<int>(draw.nmcd.dwItemSpec));
            return CDRF_SKIPDEFAULT;
        default:
            return CDRF_DODEFAULT;
    }
}

void TStatusListView::PaintEmptyText(HDC context) const {
    RECT client{};
    GetClientRect(handle_, &client);
    const TSelection font(context, font_);
    SetBkMode(context, TRANSPARENT);
    SetTextColor(context, ColorRefOf(Theme().dimText));
    DrawTextW(context, MainTexts::NothingYet, -1, &client,
              DT_SINGLELINE | DT_CENTER | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS);
}

void TStatusListView::DrawRow(HDC context, int row) const {
    const auto modelRow = ModelRow(row);
    if (!modelRow) {
        return;
    }
    const RECT area = RowArea(row);
    const bool selected =
        SendMessageW(handle_, LVM_GETITEMSTATE, static_cast<WPARAM>(row), LVIS_SELECTED) != 0;
    const TRowStyle& style = StyleOfStatus(model_.Status(*modelRow));
    const bool focused = GetFocus() == handle_;
    FillArea(context, area,
             !selected ? Theme().controlGround
             : focused ? Theme().selection
                       : Theme().selectionIdle);
    if (selected) {
        // The ground of a long error leaves hardly anything of the selection to be seen.
        FillArea(context, {0, area.top, scale_(kSelectionBar), area.bottom},
                 focused ? Theme().accent : Theme().dimText);
    }
    const TSelection font(context, font_);
    const std::wstring text = model_.Text(*modelRow);
    const std::wstring reason = model_.Reason(*modelRow);
    const int gap = reason.empty() ? 0 : scale_(kReasonGap);
    const int left = scale_(kTextMargin);
    const TRowShares shares = ShareRow(area.right - scale_(kTextMargin) - left, gap, WidthOf(context, text),
                                       WidthOf(context, reason));
    const int reasonLeft = left + shares.text + gap;
    const int right = reasonLeft + shares.reason;
    const bool hasGround = style.ground != Theme().controlGround;
    // The colours that say what a row is about can be read on the selection, those of the system cannot.
    const bool asSelected = selected && !hasGround && Theme().isHighContrast;
    const TColour textColour = asSelected ? Theme().selectionText : style.text;
    const TColour reasonColour = asSelected ? Theme().selectionText : style.reason;
    if (hasGround) {
        const RECT ground{left - scale_(kErrorMargin), area.top + scale_(1), right + scale_(kErrorMargin),
                          area.bottom - scale_(1)};
        FillRoundedArea(context, ground, style.ground, scale_(3));
    }
    SetBkMode(context, TRANSPARENT);
    const RECT textArea{left, area.top, left + shares.text, area.bottom};
    if (reason.empty()) {
        DrawPart(context, text, textArea, textColour);
        return;
    }
    // Of a file that failed the name must be seen, and the reason needs room that its path would have had.
    const auto fits = [&](std::wstring_view part) { return WidthOf(context, part) <= shares.text; };
    DrawPart(context, ShortenPath(text, fits), textArea, textColour);
    DrawPart(context, reason, {reasonLeft, area.top, right, area.bottom}, reasonColour);
}
