// The progress on the window's button in the taskbar.
#pragma once

#include <windows.h>

struct ITaskbarList3;

// Shows a value, or a state, on the taskbar button of a window. Systems without a taskbar show nothing.
class TTaskbarProgress {
public:
    TTaskbarProgress() = default;
    TTaskbarProgress(const TTaskbarProgress&) = delete;
    TTaskbarProgress& operator=(const TTaskbarProgress&) = delete;
    ~TTaskbarProgress();

    // When the system has told the window that its button exists (the message ButtonCreated).
    void Attach(HWND window);
    static UINT ButtonCreatedMessage();
    // The taskbar has fewer privileges than a program started with the highest: its message would be held
    // back.
    static void LetButtonMessagePass(HWND window);

    void Show(double position, double maximum);
    // Something is under way, nobody knows how far.
    void ShowPulse();
    // All of it red: something went wrong.
    void ShowError();
    void Hide();

    enum class TState { Hidden, Value, Pulse, Error };
    TState State() const { return state_; }

private:
    bool Enter(TState state);
    void Send() const;

    HWND window_ = nullptr;
    ITaskbarList3* list_ = nullptr;
    TState state_ = TState::Hidden;
    double position_ = 0;
    double maximum_ = 0;
};
