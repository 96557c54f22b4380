// A vertical scroll bar in the dark look.
#pragma once

#include <windows.h>

#include <functional>

#include "ui/dpi.h"
#include "ui/drawn_control.h"

// Lies over the scroll bar that the system draws for a control, which not every system draws dark. Position
// and range stay the control's own; this bar only shows and changes them.
class TScrollBar final : public TDrawnControl {
public:
    ~TScrollBar() override;

    // Puts a bar over the control's; `scrollTo` brings the control to a position of its scroll range. The
    // control needs the style WS_CLIPSIBLINGS.
    [[nodiscard]] bool AttachTo(HWND control, std::function<void(int position)> scrollTo);

protected:
    std::optional<LRESULT> HandleMessage(UINT message, WPARAM wordParameter, LPARAM longParameter) override;

private:
    struct TThumb {
        int top = 0;
        int bottom = 0;
    };

    // Follows what has happened to the control.
    void Update();
    TThumb Thumb() const;
    int PositionAt(int thumbTop) const;
    void ButtonDown(int y);
    void MouseMoved(int y);
    void ButtonUp();
    void Page();
    void SetHovered(bool hovered);
    void Paint() override;
    static LRESULT CALLBACK ControlProcedure(HWND handle, UINT message, WPARAM wordParameter,
                                             LPARAM longParameter, UINT_PTR id, DWORD_PTR data);

    HWND control_ = nullptr;
    std::function<void(int position)> scrollTo_;
    SCROLLINFO shown_{};
    bool hovered_ = false;
    bool dragging_ = false;
    int grip_ = 0;        // where in the thumb it is held
    int pageTarget_ = 0;  // where in the track the button is held down
};
