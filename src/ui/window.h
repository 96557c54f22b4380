// The base of every window of the program.
#pragma once

#include <windows.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>

// Owns one window handle and routes its messages to the object. The object is attached when the system
// creates the window and detached when the system destroys it; it never deletes itself.
class TWindow {
public:
    TWindow() = default;
    TWindow(const TWindow&) = delete;
    TWindow& operator=(const TWindow&) = delete;
    virtual ~TWindow();

    HWND Handle() const { return handle_; }
    bool Exists() const { return handle_ != nullptr; }

    // Destroys the window if it exists; the object stays and may create it again.
    void Destroy();

protected:
    // What CreateWindowExW needs; sizes are device pixels.
    struct TCreateOptions {
        std::wstring className;  // registered on first use
        std::wstring caption;
        DWORD style = WS_OVERLAPPEDWINDOW;
        DWORD extendedStyle = 0;
        UINT classStyle = 0;
        int left = CW_USEDEFAULT;
        int top = CW_USEDEFAULT;
        int width = CW_USEDEFAULT;
        int height = CW_USEDEFAULT;
        HWND parent = nullptr;
        HMENU menuOrId = nullptr;
        HICON icon = nullptr;
        HICON smallIcon = nullptr;
        HBRUSH background = nullptr;
    };

    // Creates the window; false when the system refuses (GetLastError tells why).
    [[nodiscard]] bool Create(const TCreateOptions& options);

    // Answers one message: the result, or nothing for the default processing. Exceptions that leave it are
    // told to the handler below and end the message only.
    virtual std::optional<LRESULT> HandleMessage(UINT message, WPARAM wordParameter,
                                                 LPARAM longParameter) = 0;

    // What happens when nothing was answered.
    virtual LRESULT DefaultProcessing(UINT message, WPARAM wordParameter, LPARAM longParameter);

private:
    static LRESULT CALLBACK Procedure(HWND handle, UINT message, WPARAM wordParameter, LPARAM longParameter);
    LRESULT Dispatch(UINT message, WPARAM wordParameter, LPARAM longParameter);

    HWND handle_ = nullptr;
};

// A window without a picture that only receives messages.
class TMessageWindow final : public TWindow {
public:
    using Handler =
        std::function<std::optional<LRESULT>(UINT message, WPARAM wordParameter, LPARAM longParameter)>;

    // Throws std::system_error when the system refuses another window.
    explicit TMessageWindow(Handler handler);

protected:
    std::optional<LRESULT> HandleMessage(UINT message, WPARAM wordParameter, LPARAM longParameter) override;

private:
    Handler handler_;
};

// Creates a control of the system (WS_CHILD is added to the style), still without a size. Null when the
// system refuses.
HWND CreateChild(HWND parent, const wchar_t* className, const std::wstring& text, DWORD style,
                 DWORD extendedStyle = 0);

// Gives a window its place: in its parent, or on the screen when it has none.
void PlaceWindow(HWND window, const RECT& area);

// Puts the text of a window or field into `text`, which may be wiped afterwards.
void ReadWindowText(HWND window, std::wstring& text);

// Whether a control shall mark that it has the keyboard: not before the keyboard was used.
bool ShowsFocus(HWND control);

// Runs what the system calls back, so that no exception crosses the system's frames: it is told to the
// handler set below, and false is returned.
bool RunGuarded(const std::function<void()>& work);

// Where exceptions of message handlers are told; the default writes them to the debugger.
void SetUnexpectedErrorHandler(std::function<void(const std::wstring& text)> handler);

// Handles the messages that wait, painting included, without waiting for more. A WM_QUIT is posted again for
// the outer loop.
void ProcessPendingMessages();
