#include "config/config_window_driver.h"

namespace {

// A folder that no other test uses.
std::wstring MakeFolder() {
    static int number = 0;
    const auto folder =
        std::filesystem::temp_directory_path() /
        (L"vardeko_config_" + std::to_wstring(GetCurrentProcessId()) + L"_" + std::to_wstring(++number));
    std::filesystem::create_directories(folder);
    return folder.wstring();
}

HWND MakeOwner() {
    return CreateWindowExW(0, L"STATIC", L"", WS_POPUP | WS_VISIBLE, 100, 100, 800, 600, nullptr, nullptr,
                           GetModuleHandleW(nullptr), nullptr);
}

}  // namespace

TConfigWindowDriver::TConfigWindowDriver()
    : folder(MakeFolder()),
      iniPath(std::filesystem::path(folder) / L"NASConf.ini"),
      owner(MakeOwner()),
      window(calls, table, folder) {
    RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\Quentar");
    table.Assign({{true, L"C:\\Daten", true, L".pdf,.docx", L"NO", false, false},
                  {true, L"C:\\Bilder\\Urlaub", true, L".jpg", L"NO", true, false},
                  {false, L"D:\\Projekte", false, L"", L"EX", false, true}});
    window.ShellBrowserDialog = [this](HWND, const std::wstring& title, const std::wstring& start) {
        pickerTitle = title;
        pickerStart = start;
        return picked;
    };
    window.AskUser = [this](const std::wstring& asked) {
        question = asked;
        return answer;
    };
}

TConfigWindowDriver::~TConfigWindowDriver() {
    window.Destroy();
    DestroyWindow(owner);
    ProcessPendingMessages();
    std::filesystem::remove_all(folder);
}

void TConfigWindowDriver::Open() {
    window.Show(owner);
    ProcessPendingMessages();
}

void TConfigWindowDriver::Press(WPARAM virtualKey) {
    const HWND focus = GetFocus();
    PostMessageW(focus, WM_KEYDOWN, virtualKey, 1);
    PostMessageW(focus, WM_KEYUP, virtualKey, static_cast<LPARAM>(0xC0000001));
    ProcessPendingMessages();
}

void TConfigWindowDriver::Type(const std::wstring& text) {
    for (const wchar_t character : text) {
        PostMessageW(GetFocus(), WM_CHAR, character, 1);
        ProcessPendingMessages();
    }
}

void TConfigWindowDriver::PressForReal(WORD virtualKey) {
    INPUT inputs[2]{};
    for (INPUT& input : inputs) {
        input.type = INPUT_KEYBOARD;
        input.ki.wVk = virtualKey;
    }
    inputs[1].ki.dwFlags = KEYEVENTF_KEYUP;
    SendInput(2, inputs, sizeof(INPUT));
    ProcessPendingMessages();
}

void TConfigWindowDriver::ClickAt(HWND control, int x, int y) {
    const LPARAM point = MAKELPARAM(x, y);
    SendMessageW(control, WM_LBUTTONDOWN, MK_LBUTTON, point);
    SendMessageW(control, WM_LBUTTONUP, 0, point);
    ProcessPendingMessages();
}

void TConfigWindowDriver::Click(HWND control) {
    ClickAt(control, 5, 5);
}

void TConfigWindowDriver::Drag(HWND control, POINT from, POINT to) {
    SendMessageW(control, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(from.x, from.y));
    SendMessageW(control, WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM((from.x + to.x) / 2, from.y));
    SendMessageW(control, WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(to.x, to.y));
    SendMessageW(control, WM_LBUTTONUP, 0, MAKELPARAM(to.x, to.y));
    ProcessPendingMessages();
}

void TConfigWindowDriver::ClickCell(std::size_t row, std::size_t column) {
    const TGridArea cell = window.cxGrid.Layout().Cell(row, window.cxGridDBTv.PositionOf(column));
    ClickAt(window.cxGrid.Handle(), (cell.left + cell.right) / 2, cell.top + 12);
}

void TConfigWindowDriver::FocusCell(std::size_t row, std::size_t column) {
    SetFocus(window.cxGrid.Handle());
    table.MoveTo(row);
    Press(VK_HOME);
    for (std::size_t step = 0; step < window.cxGridDBTv.PositionOf(column); ++step) {
        Press(VK_RIGHT);
    }
}
