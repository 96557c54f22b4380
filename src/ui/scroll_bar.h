// A vertical scroll bar in the dark look.
#pragma once

#include <windows.h>

#include <functional>
#include <utility>

#include "ui/drawn_control.h"
#include "ui/scroll_range.h"

// Shows a range and lets the user change its position, which stays the owner's.
class TScrollBar final : public TDrawnControl {
public:
    ~TScrollBar() override;

    // Creates the bar in its owner, hidden; `scrollTo` brings the owner to a position of the range, which is
    // then shown anew.
    [[nodiscard]] bool CreateIn(HWND owner, std::function<void(int position)> scrollTo);
    // Shows a range at a place of the parent; nothing while all of it is seen.
    void Show(const TScrollRange& range, const RECT& place);

    // Puts the bar over the one that the system draws for a control, which not every system draws dark, and
    // keeps it like that one, whose range begins at 0. The control needs the style WS_CLIPSIBLINGS.
    [[nodiscard]] bool AttachTo(HWND control, std::function<void(int position)> scrollTo);

    // Marks the lines of the track for whose share of the range, from `first` up to but not including
    // `behind`, `hasMark` answers true. It is asked whenever the bar is painted.
    void SetMarks(std::function<bool(int first, int behind)> hasMark) { hasMark_ = std::move(hasMark); }

protected:
    std::optional<LRESULT> HandleMessage(UINT message, WPARAM wordParameter, LPARAM longParameter) override;

private:
    // Follows what has happened to the control it is attached to.
    void Update();
    int Track() const;
    int LeastThumb() const;
    TScrollThumb Thumb() const { return range_.Thumb(Track(), LeastThumb()); }
    void ButtonDown(int y);
    void MouseMoved(int y);
    void ButtonUp();
    void Page();
    void SetHovered(bool hovered);
    void Paint() override;
    void PaintMarks(HDC context, const RECT& client) const;
    static LRESULT CALLBACK ControlProcedure(HWND handle, UINT message, WPARAM wordParameter,
                                             LPARAM longParameter, UINT_PTR id, DWORD_PTR data);

    HWND owner_ = nullptr;
    std::function<void(int position)> scrollTo_;
    std::function<bool(int first, int behind)> hasMark_;
    TScrollRange range_;
    bool hovered_ = false;
    bool dragging_ = false;
    int grip_ = 0;        // where in the thumb it is held
    int pageTarget_ = 0;  // where in the track the button is held down
};
