// Drives the configuration window as a user does.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "config/config_window.h"

inline constexpr auto kAktive = static_cast<std::size_t>(TSourceFolderColumn::Aktive);
inline constexpr auto kHistory = static_cast<std::size_t>(TSourceFolderColumn::History);
inline constexpr auto kDirectory = static_cast<std::size_t>(TSourceFolderColumn::Directory);
inline constexpr auto kHidden = static_cast<std::size_t>(TSourceFolderColumn::Hidden);
inline constexpr auto kExtensions = static_cast<std::size_t>(TSourceFolderColumn::Extensions);
inline constexpr auto kMode = static_cast<std::size_t>(TSourceFolderColumn::ExtensionMode);

// A configuration window over a table of three rows and a folder of its own, with stand-ins for its dialogs.
class TConfigWindowDriver : public testing::Test {
protected:
    TConfigWindowDriver();
    ~TConfigWindowDriver() override;

    void Open();
    // Keys and characters go to the control that has the focus, through the message loop.
    void Press(WPARAM virtualKey);
    void Type(const std::wstring& text);
    // As a key of the keyboard, so that its state is known, too.
    void PressForReal(WORD virtualKey);
    void ClickAt(HWND control, int x, int y);
    void Click(HWND control);
    void Drag(HWND control, POINT from, POINT to);
    void ClickCell(std::size_t row, std::size_t column);
    void FocusCell(std::size_t row, std::size_t column);

    std::wstring folder;
    std::filesystem::path iniPath;
    TPlatformCalls calls = SystemPlatformCalls();
    TSourceFolderTable table;
    HWND owner = nullptr;
    TfmConfig window;

    // What the stand-ins answer, and what they were asked.
    std::optional<std::wstring> picked;
    std::wstring pickerTitle;
    std::wstring pickerStart;
    bool answer = true;
    std::wstring question;
};
