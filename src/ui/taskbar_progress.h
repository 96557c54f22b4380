// The progress on the window's button in the taskbar.
#pragma once

#include <windows.h>

struct ITaskbarList3;

// Shows a value on the taskbar button of a window. Systems without a taskbar show nothing.
class TTaskbarProgress {
public:
    TTaskbarProgress() = default;
    TTaskbarProgress(const TTaskbarProgress&) = delete;
    TTaskbarProgress& operator=(const TTaskbarProgress&) = delete;
    ~TTaskbarProgress();

    // When the system has told the window that its button exists (the message ButtonCreated).
    void Attach(HWND window);
    static UINT ButtonCreatedMessage();

    void Show(double position, double maximum);
    void Hide();

private:
    HWND window_ = nullptr;
    ITaskbarList3* list_ = nullptr;
    bool shown_ = false;
    double position_ = 0;
    double maximum_ = 0;
};
