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

// A context that bitmaps are selected into.
class TMemoryContext {
public:
    explicit TMemoryContext(HDC like) : context_(CreateCompatibleDC(like)) {}
    TMemoryContext(const TMemoryContext&) = delete;
    TMemoryContext& operator=(const TMemoryContext&) = delete;
    ~TMemoryContext() { DeleteDC(context_); }

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

// The painting of one WM_PAINT, made in memory and shown whole when the object goes, so that nothing
// flickers.
class TPaintContext {
public:
    explicit TPaintContext(HWND window)
        : window_(window),
          screen_(BeginPaint(window, &paint_)),
          client_(ClientArea(window)),
          memory_(screen_),
          bitmap_(CreateCompatibleBitmap(screen_, client_.right, client_.bottom)),
          previous_(SelectObject(memory_.Get(), bitmap_.Get())) {}
    TPaintContext(const TPaintContext&) = delete;
    TPaintContext& operator=(const TPaintContext&) = delete;
    ~TPaintContext() {
        BitBlt(screen_, 0, 0, client_.right, client_.bottom, memory_.Get(), 0, 0, SRCCOPY);
        SelectObject(memory_.Get(), previous_);
        EndPaint(window_, &paint_);
    }

    HDC Get() const { return memory_.Get(); }
    const RECT& Client() const { return client_; }

private:
    static RECT ClientArea(HWND window) {
        RECT area{};
        GetClientRect(window, &area);
        return area;
    }

    HWND window_;
    PAINTSTRUCT paint_{};
    HDC screen_;
    RECT client_;
    TMemoryContext memory_;
    TBitmap bitmap_;
    HGDIOBJ previous_;
};

inline COLORREF ColorRefOf(TColour colour) {
    return ToColorRef(colour);
}

// The answer to a WM_CTLCOLOR... message: the colours of a system control, told to the device context that
// came with it.
inline LRESULT ControlColours(WPARAM deviceContext, TColour text, TColour ground) {
    const HDC context = reinterpret_cast<HDC>(deviceContext);
    SetTextColor(context, ColorRefOf(text));
    SetBkColor(context, ColorRefOf(ground));
    SetDCBrushColor(context, ColorRefOf(ground));
    return reinterpret_cast<LRESULT>(GetStockObject(DC_BRUSH));
}

// Fills without a brush of its own.
inline void FillArea(HDC context, const RECT& area, TColour colour) {
    const COLORREF previous = SetBkColor(context, ColorRefOf(colour));
    ExtTextOutW(context, 0, 0, ETO_OPAQUE, &area, nullptr, 0, nullptr);
    SetBkColor(context, previous);
}

// The same with round corners of that radius.
inline void FillRoundedArea(HDC context, const RECT& area, TColour colour, int radius) {
    const TBrush brush(CreateSolidBrush(ColorRefOf(colour)));
    const TSelection brushSelection(context, brush.Get());
    const TSelection penSelection(context, GetStockObject(NULL_PEN));
    // Without a pen the last column and row stay free.
    RoundRect(context, area.left, area.top, area.right + 1, area.bottom + 1, 2 * radius, 2 * radius);
}

// Draws the outline of an area, `thickness` device pixels wide, inside of it.
inline void FrameArea(HDC context, const RECT& area, TColour colour, int thickness = 1) {
    FillArea(context, {area.left, area.top, area.right, area.top + thickness}, colour);
    FillArea(context, {area.left, area.bottom - thickness, area.right, area.bottom}, colour);
    FillArea(context, {area.left, area.top, area.left + thickness, area.bottom}, colour);
    FillArea(context, {area.right - thickness, area.top, area.right, area.bottom}, colour);
}
