#include "ui/check_box.h"

#include <commctrl.h>

#include <algorithm>

#include "ui/device_context.h"
#include "ui/hover.h"
#include "ui/mark_painter.h"
#include "ui/push_button.h"
#include "ui/rounded_box.h"
#include "ui/window.h"
#include "ui/window_scale.h"

namespace {

// At a scale of 100 %.
constexpr int kGap = 8;
constexpr int kPadding = 3;

}  // namespace

bool TCheckBox::CreateIn(HWND parent, const std::wstring& caption, TScale scale, HFONT font) {
    caption_ = caption;
    scale_ = scale;
    font_ = font;
    handle_ = CreateChild(parent, L"BUTTON", caption, WS_VISIBLE | WS_TABSTOP | BS_AUTOCHECKBOX);
    if (handle_ == nullptr) {
        return false;
    }
    WatchHover(handle_, handle_);
    return SetWindowSubclass(handle_, &TCheckBox::Procedure, 1, reinterpret_cast<DWORD_PTR>(this));
}

void TCheckBox::SetScale(TScale scale, HFONT font) {
    scale_ = scale;
    font_ = font;
    InvalidateRect(handle_, nullptr, FALSE);
}

void TCheckBox::SetChecked(bool checked) {
    SendMessageW(handle_, BM_SETCHECK, checked ? BST_CHECKED : BST_UNCHECKED, 0);
}

SIZE TCheckBox::PreferredSize() const {
    return {TextWidth(font_, caption_) + scale_(kMarkSize + kGap + 2 * kPadding),
            TextHeight(font_) + scale_(2 * kPadding)};
}

void TCheckBox::Paint() const {
    const TPaintContext paint(handle_);
    RECT area = paint.Client();
    const TColour ground = IsHovered(handle_) ? Theme().hover : Theme().windowGround;
    PaintRoundedBox(paint.Get(), area,
                    {.ground = ground,
                     .border = GetFocus() == handle_ ? Theme().accent : ground,
                     .outside = Theme().windowGround,
                     .thickness = scale_(1),
                     .radius = scale_(kCornerRadius)});
    area.left += scale_(kPadding);
    RECT mark = area;
    mark.right = mark.left + scale_(kMarkSize);
    PaintMark(paint.Get(), mark, Checked() ? TMark::CheckOn : TMark::CheckOff, scale_, ground);
    area.left = mark.right + scale_(kGap);
    const TSelection selection(paint.Get(), font_);
    SetBkMode(paint.Get(), TRANSPARENT);
    SetTextColor(paint.Get(), ColorRefOf(Theme().text));
    DrawTextW(paint.Get(), caption_.c_str(), -1, &area, DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX);
}

LRESULT CALLBACK TCheckBox::Procedure(HWND handle, UINT message, WPARAM wordParameter, LPARAM longParameter,
                                      UINT_PTR id, DWORD_PTR data) {
    auto* box = reinterpret_cast<TCheckBox*>(data);
    switch (message) {
        case WM_PAINT:
            RunGuarded([box] { box->Paint(); });
            return 0;
        case WM_ERASEBKGND:
            return TRUE;
        case WM_NCDESTROY:
            RemoveWindowSubclass(handle, &TCheckBox::Procedure, id);
            box->handle_ = nullptr;
            break;
        default:
            break;
    }
    const LRESULT result = DefSubclassProc(handle, message, wordParameter, longParameter);
    RepaintButtonAfter(handle, message);
    return result;
}
