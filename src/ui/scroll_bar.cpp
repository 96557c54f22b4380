#include "ui/scroll_bar.h"

#include <commctrl.h>
#include <windowsx.h>

#include <algorithm>
#include <utility>

#include "ui/device_context.h"
#include "ui/window_scale.h"

namespace {

constexpr int kLeastThumb = 28;  // at a scale of 100 %
constexpr int kThumbMargin = 4;  // a part of the bar's width

constexpr int kMarkHeight = 2;
constexpr int kMarkWidth = 5;

constexpr UINT_PTR kPageTimer = 1;
constexpr UINT kFirstPageDelay = 300;  // milliseconds
constexpr UINT kPageDelay = 50;

}  // namespace

TScrollBar::~TScrollBar() {
    if (IsWindow(owner_)) {
        RemoveWindowSubclass(owner_, &TScrollBar::ControlProcedure, 1);
    }
    Destroy();
}

bool TScrollBar::CreateIn(HWND owner, std::function<void(int position)> scrollTo) {
    owner_ = owner;
    scrollTo_ = std::move(scrollTo);
    return CreateControl(owner, L"VardekoScrollBar", WS_CLIPSIBLINGS);
}

bool TScrollBar::AttachTo(HWND control, std::function<void(int position)> scrollTo) {
    if (!CreateIn(GetParent(control), std::move(scrollTo))) {
        return false;
    }
    owner_ = control;
    scrollTo_ = [this, scroll = std::exchange(scrollTo_, {})](int position) {
        scroll(position);
        Update();
    };
    SetWindowSubclass(control, &TScrollBar::ControlProcedure, 1, reinterpret_cast<DWORD_PTR>(this));
    Update();
    return true;
}

void TScrollBar::Update() {
    if ((GetWindowLongPtrW(owner_, GWL_STYLE) & WS_VSCROLL) == 0) {
        Show({}, {});
        return;
    }
    SCROLLINFO info{};
    info.cbSize = sizeof(info);
    info.fMask = SIF_RANGE | SIF_PAGE | SIF_POS;
    GetScrollInfo(owner_, SB_VERT, &info);
    RECT area{};
    GetWindowRect(owner_, &area);
    MapWindowPoints(nullptr, GetParent(owner_), reinterpret_cast<POINT*>(&area), 2);
    RECT client{};
    GetClientRect(owner_, &client);
    area.left += client.right;
    Show({info.nMax + 1, static_cast<int>(info.nPage), info.nPos}, area);
}

void TScrollBar::Show(const TScrollRange& range, const RECT& place) {
    if (!Exists()) {
        return;
    }
    const bool needed = range.End() > 0;
    if (needed) {
        RECT current{};
        GetWindowRect(Handle(), &current);
        MapWindowPoints(nullptr, GetParent(Handle()), reinterpret_cast<POINT*>(&current), 2);
        if (!EqualRect(&place, &current)) {
            SetWindowPos(Handle(), HWND_TOP, place.left, place.top, place.right - place.left,
                         place.bottom - place.top, SWP_NOACTIVATE);
        }
    }
    if (((GetWindowLongPtrW(Handle(), GWL_STYLE) & WS_VISIBLE) != 0) != needed) {
        ShowWindow(Handle(), needed ? SW_SHOWNA : SW_HIDE);
    }
    if (range != range_) {
        range_ = range;
        Repaint();
    }
}

int TScrollBar::Track() const {
    RECT client{};
    GetClientRect(Handle(), &client);
    return client.bottom;
}

int TScrollBar::LeastThumb() const {
    return ScaleOfWindow(Handle())(kLeastThumb);
}

void TScrollBar::ButtonDown(int y) {
    const TScrollThumb thumb = Thumb();
    SetCapture(Handle());
    if (thumb.Contains(y)) {
        dragging_ = true;
        grip_ = y - thumb.top;
        Repaint();
        return;
    }
    pageTarget_ = y;
    Page();
    SetTimer(Handle(), kPageTimer, kFirstPageDelay, nullptr);
}

// One page towards the point where the button is held, until the thumb is there.
void TScrollBar::Page() {
    const TScrollThumb thumb = Thumb();
    if (thumb.Contains(pageTarget_)) {
        KillTimer(Handle(), kPageTimer);
        return;
    }
    const int page = std::max(1, range_.page);
    const int position = range_.position + (pageTarget_ < thumb.top ? -page : page);
    scrollTo_(std::clamp(position, 0, range_.End()));
}

void TScrollBar::MouseMoved(int y) {
    SetHovered(true);
    if (dragging_) {
        scrollTo_(range_.PositionOf(y - grip_, Track(), LeastThumb()));
    }
}

void TScrollBar::ButtonUp() {
    KillTimer(Handle(), kPageTimer);
    dragging_ = false;
    Repaint();
}

void TScrollBar::SetHovered(bool hovered) {
    if (hovered_ == hovered) {
        return;
    }
    hovered_ = hovered;
    Repaint();
    if (hovered) {
        TRACKMOUSEEVENT track{sizeof(track), TME_LEAVE, Handle(), 0};
        TrackMouseEvent(&track);
    }
}

void TScrollBar::Paint() {
    const TPaintContext paint(Handle());
    FillArea(paint.Get(), paint.Client(), Theme().scrollTrack);
    const int margin = paint.Client().right / kThumbMargin;
    const TScrollThumb thumb = Thumb();
    const RECT area{paint.Client().left + margin, thumb.top + margin / 2, paint.Client().right - margin,
                    thumb.bottom - margin / 2};
    FillRoundedArea(paint.Get(), area, hovered_ || dragging_ ? Theme().scrollThumbHover : Theme().scrollThumb,
                    (area.right - area.left) / 2);
    if (hasMark_) {
        PaintMarks(paint.Get(), paint.Client());
    }
}

void TScrollBar::PaintMarks(HDC context, const RECT& client) const {
    const TScale scale = ScaleOfWindow(Handle());
    const int step = scale(kMarkHeight);
    for (int top = 0; top < client.bottom; top += step) {
        if (hasMark_(MulDiv(top, range_.length, client.bottom),
                     MulDiv(top + step, range_.length, client.bottom))) {
            FillArea(context, {client.right - scale(kMarkWidth), top, client.right, top + step},
                     Theme().errorMark);
        }
    }
}

std::optional<LRESULT> TScrollBar::HandleMessage(UINT message, WPARAM wordParameter, LPARAM longParameter) {
    switch (message) {
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK:
            ButtonDown(GET_Y_LPARAM(longParameter));
            return 0;
        case WM_MOUSEMOVE:
            MouseMoved(GET_Y_LPARAM(longParameter));
            return 0;
        case WM_LBUTTONUP:
            ReleaseCapture();
            return 0;
        case WM_CAPTURECHANGED:
            ButtonUp();
            return 0;
        case WM_MOUSELEAVE:
            SetHovered(false);
            return 0;
        case WM_TIMER:
            SetTimer(Handle(), kPageTimer, kPageDelay, nullptr);
            Page();
            return 0;
        case WM_MOUSEWHEEL:
            return SendMessageW(owner_, message, wordParameter, longParameter);
        default:
            return TDrawnControl::HandleMessage(message, wordParameter, longParameter);
    }
}

// Whatever moves the control's contents makes it paint or lays it out.
LRESULT CALLBACK TScrollBar::ControlProcedure(HWND handle, UINT message, WPARAM wordParameter,
                                              LPARAM longParameter, UINT_PTR id, DWORD_PTR data) {
    const LRESULT result = DefSubclassProc(handle, message, wordParameter, longParameter);
    switch (message) {
        case WM_PAINT:
        case WM_NCPAINT:
        case WM_VSCROLL:
        case WM_MOUSEWHEEL:
        case WM_WINDOWPOSCHANGED:
        case WM_SHOWWINDOW:
            if (auto* bar = reinterpret_cast<TScrollBar*>(data); bar->Exists()) {
                RunGuarded([bar] { bar->Update(); });
            }
            break;
        case WM_NCDESTROY:
            RemoveWindowSubclass(handle, &TScrollBar::ControlProcedure, id);
            break;
        default:
            break;
    }
    return result;
}
