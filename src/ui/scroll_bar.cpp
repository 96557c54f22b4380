#include "ui/scroll_bar.h"

#include <commctrl.h>
#include <windowsx.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "ui/device_context.h"
#include "ui/window_scale.h"

namespace {

// Sizes at a scale of 100 %.
constexpr int kLeastThumb = 28;
constexpr int kThumbMargin = 4;

constexpr UINT_PTR kPageTimer = 1;
constexpr UINT kFirstPageDelay = 300;  // milliseconds
constexpr UINT kPageDelay = 50;

SCROLLINFO ScrollInfoOf(HWND control) {
    SCROLLINFO info{};
    info.cbSize = sizeof(info);
    info.fMask = SIF_RANGE | SIF_PAGE | SIF_POS;
    GetScrollInfo(control, SB_VERT, &info);
    return info;
}

int LastPosition(const SCROLLINFO& info) {
    return std::max(info.nMin, info.nMax - std::max(0, static_cast<int>(info.nPage) - 1));
}

}  // namespace

TScrollBar::~TScrollBar() {
    if (IsWindow(control_)) {
        RemoveWindowSubclass(control_, &TScrollBar::ControlProcedure, 1);
    }
    Destroy();
}

bool TScrollBar::AttachTo(HWND control, std::function<void(int position)> scrollTo) {
    control_ = control;
    scrollTo_ = std::move(scrollTo);
    if (!CreateControl(GetParent(control), L"VardekoScrollBar", WS_CLIPSIBLINGS)) {
        return false;
    }
    SetWindowSubclass(control, &TScrollBar::ControlProcedure, 1, reinterpret_cast<DWORD_PTR>(this));
    Update();
    return true;
}

void TScrollBar::Update() {
    const SCROLLINFO info = ScrollInfoOf(control_);
    const bool needed = (GetWindowLongPtrW(control_, GWL_STYLE) & WS_VSCROLL) != 0;
    if (needed) {
        RECT area{};
        GetWindowRect(control_, &area);
        MapWindowPoints(nullptr, GetParent(control_), reinterpret_cast<POINT*>(&area), 2);
        RECT client{};
        GetClientRect(control_, &client);
        const RECT place{area.left + client.right, area.top, area.right, area.bottom};
        RECT current{};
        GetWindowRect(Handle(), &current);
        MapWindowPoints(nullptr, GetParent(control_), reinterpret_cast<POINT*>(&current), 2);
        if (!EqualRect(&place, &current)) {
            SetWindowPos(Handle(), HWND_TOP, place.left, place.top, place.right - place.left,
                         place.bottom - place.top, SWP_NOACTIVATE);
        }
    }
    if ((IsWindowVisible(Handle()) != FALSE) != needed) {
        ShowWindow(Handle(), needed ? SW_SHOWNA : SW_HIDE);
    }
    if (info.nPos != shown_.nPos || info.nMax != shown_.nMax || info.nPage != shown_.nPage) {
        shown_ = info;
        Repaint();
    }
}

TScrollBar::TThumb TScrollBar::Thumb() const {
    RECT client{};
    GetClientRect(Handle(), &client);
    const double range = std::max(1, shown_.nMax - shown_.nMin + 1);
    const int least = ScaleOfWindow(Handle())(kLeastThumb);
    const int height = std::min<int>(
        client.bottom,
        std::max(least, static_cast<int>(client.bottom * static_cast<double>(shown_.nPage) / range)));
    const double steps = std::max(1, LastPosition(shown_) - shown_.nMin);
    const int top =
        static_cast<int>((client.bottom - height) * std::min(1.0, (shown_.nPos - shown_.nMin) / steps));
    return {top, top + height};
}

int TScrollBar::PositionAt(int thumbTop) const {
    RECT client{};
    GetClientRect(Handle(), &client);
    const TThumb thumb = Thumb();
    const double way = std::max<int>(1, client.bottom - (thumb.bottom - thumb.top));
    const double share = std::clamp(thumbTop / way, 0.0, 1.0);
    return shown_.nMin + static_cast<int>(std::lround(share * (LastPosition(shown_) - shown_.nMin)));
}

void TScrollBar::ButtonDown(int y) {
    const TThumb thumb = Thumb();
    SetCapture(Handle());
    if (y >= thumb.top && y < thumb.bottom) {
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
    const TThumb thumb = Thumb();
    if (pageTarget_ >= thumb.top && pageTarget_ < thumb.bottom) {
        KillTimer(Handle(), kPageTimer);
        return;
    }
    const int page = std::max(1, static_cast<int>(shown_.nPage));
    const int position = shown_.nPos + (pageTarget_ < thumb.top ? -page : page);
    scrollTo_(std::clamp(position, shown_.nMin, LastPosition(shown_)));
    Update();
}

void TScrollBar::MouseMoved(int y) {
    SetHovered(true);
    if (dragging_) {
        scrollTo_(PositionAt(y - grip_));
        Update();
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
    FillArea(paint.Get(), paint.Client(), Theme::ScrollTrack);
    const int margin = ScaleOfWindow(Handle())(kThumbMargin);
    const TThumb thumb = Thumb();
    const RECT area{paint.Client().left + margin, thumb.top + margin / 2, paint.Client().right - margin,
                    thumb.bottom - margin / 2};
    FillRoundedArea(paint.Get(), area, hovered_ || dragging_ ? Theme::ScrollThumbHover : Theme::ScrollThumb,
                    (area.right - area.left) / 2);
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
            return SendMessageW(control_, message, wordParameter, longParameter);
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
