// A menu that pops up at a point and answers what was chosen.
#pragma once

#include <windows.h>

#include <cstddef>

class TPopupMenu {
public:
    TPopupMenu() : menu_(CreatePopupMenu()) {}
    TPopupMenu(const TPopupMenu&) = delete;
    TPopupMenu& operator=(const TPopupMenu&) = delete;
    ~TPopupMenu() { DestroyMenu(menu_); }

    HMENU Get() const { return menu_; }
    // The identifier of the item chosen; 0 for none. The point is in device pixels of the screen.
    std::size_t Track(HWND window, POINT screenPoint) const {
        return static_cast<std::size_t>(TrackPopupMenu(menu_, TPM_RETURNCMD | TPM_RIGHTBUTTON, screenPoint.x,
                                                       screenPoint.y, 0, window, nullptr));
    }

private:
    HMENU menu_;
};
