// Owners of what painting needs: device contexts and what is selected into them.
#pragma once

#include <windows.h>

#include "support/handles.h"
#include "ui/theme.h"

// The screen's device context, for measuring.
class TScreenContext {
public:
    TScreenContext() : context_(GetDC(nullptr)) {}
    TScreenContext(const TScreenContext&) = delete;
    TScreenContext& operator=(const TScreenContext&) = delete;
    ~TScreenContext() { ReleaseDC(nullptr, context_); }

    HDC Get() const { return context_; }

private:
    HDC context_;
};

// Selects a GDI object for its own lifetime.
class TSelection {
public:
    TSelection(HDC context, HGDIOBJ object) : context_(context), previous_(SelectObject(context, object)) {}
    TSelection(const TSelection&) = delete;
    TSelection& operator=(const TSelection&) = delete;
    ~TSelection() { SelectObject(context_, previous_); }

private:
    HDC context_;
    HGDIOBJ previous_;
};

// A picture in memory that reaches its target whole when it goes, so that nothing flickers. Coordinates are
// those of the target.
class TBufferedContext {
public:
    TBufferedContext(HDC target, const RECT& area)
        : target_(target),
          area_(area),
          context_(CreateCompatibleDC(target)),
          bitmap_(CreateCompatibleBitmap(target, area.right - area.left, area.bottom - area.top)),
          previous_(SelectObject(context_, bitmap_.Get())) {
        SetViewportOrgEx(context_, -area.left, -area.top, nullptr);
    }
    TBufferedContext(const TBufferedContext&) = delete;
    TBufferedContext& operator=(const TBufferedContext&) = delete;
    ~TBufferedContext() {
        BitBlt(target_, area_.left, area_.top, area_.right - area_.left, area_.bottom - area_.top, context_,
               area_.left, area_.top, SRCCOPY);
        SelectObject(context_, previous_);
        DeleteDC(context_);
    }

    HDC Get() const { return context_; }

private:
    HDC target_;
    RECT area_;
    HDC context_;
    TBitmap bitmap_;
    HGDIOBJ previous_;
};

// The device context of one WM_PAINT, drawn to through a picture in memory.
class TPaintContext {
public:
    explicit TPaintContext(HWND window) : window_(window), screen_(BeginPaint(window, &paint_)) {
        GetClientRect(window, &client_);
    }
    TPaintContext(const TPaintContext&) = delete;
    TPaintContext& operator=(const TPaintContext&) = delete;
    ~TPaintContext() { EndPaint(window_, &paint_); }

    HDC Screen() const { return screen_; }
    const RECT& Client() const { return client_; }

private:
    HWND window_;
    PAINTSTRUCT paint_{};
    HDC screen_;
    RECT client_{};
};

inline COLORREF ColorRefOf(TColour colour) {
    return ToColorRef(colour);
}

// Fills without a brush of its own.
inline void FillArea(HDC context, const RECT& area, TColour colour) {
    const COLORREF previous = SetBkColor(context, ColorRefOf(colour));
    ExtTextOutW(context, 0, 0, ETO_OPAQUE, &area, nullptr, 0, nullptr);
    SetBkColor(context, previous);
}

// Draws the outline of an area, `thickness` device pixels wide, inside of it.
inline void FrameArea(HDC context, const RECT& area, TColour colour, int thickness = 1) {
    FillArea(context, {area.left, area.top, area.right, area.top + thickness}, colour);
    FillArea(context, {area.left, area.bottom - thickness, area.right, area.bottom}, colour);
    FillArea(context, {area.left, area.top, area.left + thickness, area.bottom}, colour);
    FillArea(context, {area.right - thickness, area.top, area.right, area.bottom}, colour);
}
