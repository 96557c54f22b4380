// What a whole run needs of another Windows program beside the one that is tested.
//   onlooker hold FILE     keeps a file open, shared with nobody, until standard input ends
//   onlooker rows          prints the rows of the program's status list, oldest first, when its window is
//   gone
//   onlooker scale TITLE PERCENT  tells the window that it stands on a monitor of that scale now, and prints
//   its size and how much its program knows of scales
#include <windows.h>

#include <commctrl.h>

#include <cstdio>
#include <string>
#include <vector>

namespace {

void Print(const std::wstring& text) {
    const int size = static_cast<int>(text.size());
    std::string bytes(4 * text.size() + 1, '\0');
    bytes.resize(static_cast<std::size_t>(WideCharToMultiByte(
        CP_UTF8, 0, text.data(), size, bytes.data(), static_cast<int>(bytes.size()), nullptr, nullptr)));
    std::printf("%s\n", bytes.c_str());
    std::fflush(stdout);
}

int Hold(const wchar_t* path) {
    const HANDLE file =
        CreateFileW(path, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return 1;
    }
    Print(L"held");
    while (std::getchar() != EOF) {
    }
    CloseHandle(file);
    return 0;
}

HWND StatusList() {
    for (int attempt = 0; attempt < 500; ++attempt) {
        if (const HWND window = FindWindowW(nullptr, L"Vardeko x64")) {
            if (const HWND list = FindWindowExW(window, nullptr, WC_LISTVIEWW, nullptr)) {
                return list;
            }
        }
        Sleep(20);
    }
    return nullptr;
}

// The text of a row of another process, which wants the memory for it in that process.
std::wstring RowText(HWND list, HANDLE process, void* shared, int row) {
    constexpr int kLength = 2000;
    wchar_t text[kLength]{};
    LVITEMW item{};
    item.pszText = reinterpret_cast<wchar_t*>(static_cast<char*>(shared) + sizeof(item));
    item.cchTextMax = kLength;
    DWORD_PTR length = 0;
    WriteProcessMemory(process, shared, &item, sizeof(item), nullptr);
    SendMessageTimeoutW(list, LVM_GETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(shared),
                        SMTO_NORMAL, 5000, &length);
    ReadProcessMemory(process, item.pszText, text, sizeof(text), nullptr);
    return text;
}

int Rows() {
    const HWND list = StatusList();
    DWORD processId = 0;
    GetWindowThreadProcessId(list, &processId);
    const HANDLE process =
        OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_READ | PROCESS_VM_WRITE, FALSE, processId);
    if (process == nullptr) {
        return 1;
    }
    void* shared = VirtualAllocEx(process, nullptr, 8192, MEM_COMMIT, PAGE_READWRITE);
    std::vector<std::wstring> rows;
    while (IsWindow(list)) {
        DWORD_PTR count = 0;
        if (SendMessageTimeoutW(list, LVM_GETITEMCOUNT, 0, 0, SMTO_NORMAL, 5000, &count) != 0) {
            // The newest row stands first.
            for (int row = static_cast<int>(count - rows.size()) - 1; row >= 0; --row) {
                rows.push_back(RowText(list, process, shared, row));
            }
        }
        Sleep(10);
    }
    for (const std::wstring& row : rows) {
        Print(row);
    }
    return 0;
}

int Scale(const wchar_t* title, int percent) {
    const HWND window = FindWindowW(nullptr, title);
    DWORD processId = 0;
    GetWindowThreadProcessId(window, &processId);
    const HANDLE process = OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_WRITE, FALSE, processId);
    if (process == nullptr) {
        return 1;
    }
    // The size at 100 % is the one that the window had first.
    const auto firstSize = [window](const wchar_t* name, LONG now) {
        if (GetPropW(window, name) == nullptr) {
            SetPropW(window, name, reinterpret_cast<HANDLE>(static_cast<INT_PTR>(now)));
        }
        return static_cast<int>(reinterpret_cast<INT_PTR>(GetPropW(window, name)));
    };
    RECT area{};
    GetWindowRect(window, &area);
    area = {0, 0, MulDiv(firstSize(L"first width", area.right - area.left), percent, 100),
            MulDiv(firstSize(L"first height", area.bottom - area.top), percent, 100)};
    void* shared = VirtualAllocEx(process, nullptr, sizeof(area), MEM_COMMIT, PAGE_READWRITE);
    WriteProcessMemory(process, shared, &area, sizeof(area), nullptr);
    const int dpi = MulDiv(USER_DEFAULT_SCREEN_DPI, percent, 100);
    SendMessageW(window, WM_DPICHANGED, MAKEWPARAM(dpi, dpi), reinterpret_cast<LPARAM>(shared));
    GetWindowRect(window, &area);
    // From outside, version 2 of it looks like version 1.
    const bool perMonitor = GetAwarenessFromDpiAwarenessContext(GetWindowDpiAwarenessContext(window)) ==
                            DPI_AWARENESS_PER_MONITOR_AWARE;
    Print(std::to_wstring(area.right - area.left) + L" " + std::to_wstring(area.bottom - area.top) +
          (perMonitor ? L" per-monitor" : L" other"));
    return 0;
}

}  // namespace

int wmain(int count, wchar_t** words) {
    const std::wstring task = count > 1 ? words[1] : L"";
    if (task == L"hold" && count == 3) {
        return Hold(words[2]);
    }
    if (task == L"scale" && count == 4) {
        SetProcessDpiAwarenessContext(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE);
        return Scale(words[2], _wtoi(words[3]));
    }
    return task == L"rows" ? Rows() : 64;
}
