// How long the program takes from its start to a window that answers.
//
//   startup_bench PROGRAM ROUNDS
#include <windows.h>

#include <cstdlib>
#include <string>

#include "measure.h"

namespace {

BOOL CALLBACK FindVisible(HWND window, LPARAM found) {
    if (!IsWindowVisible(window)) {
        return TRUE;
    }
    *reinterpret_cast<HWND*>(found) = window;
    return FALSE;
}

// The first window of the thread that is shown and has answered; null when there is none yet.
HWND AnsweringWindow(DWORD thread) {
    HWND window = nullptr;
    EnumThreadWindows(thread, &FindVisible, reinterpret_cast<LPARAM>(&window));
    DWORD_PTR answer = 0;
    return window && SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_NORMAL, 10'000, &answer) ? window
                                                                                              : nullptr;
}

}  // namespace

extern "C" int wmain(int count, wchar_t** arguments) {
    for (int round = count > 2 ? _wtoi(arguments[2]) : 0; round > 0; --round) {
        std::wstring commandLine = L"\"" + std::wstring(arguments[1]) + L"\"";
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION process{};
        HWND window = nullptr;
        const double seconds = SecondsOf([&] {
            if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                                &startup, &process)) {
                std::exit(66);
            }
            while (!window && WaitForSingleObject(process.hProcess, 1) == WAIT_TIMEOUT) {
                window = AnsweringWindow(process.dwThreadId);
            }
        });
        Tell("start", "ours", seconds * 1e3);
        PostMessageW(window, WM_CLOSE, 0, 0);
        WaitForSingleObject(process.hProcess, 10'000);
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    }
    return 0;
}
