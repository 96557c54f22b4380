#include "config/config_window.h"

#include <commctrl.h>
#include <gmock/gmock.h>
#include <oleacc.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

#include "config/config_window_driver.h"
#include "store/credential_protection.h"
#include "support/system_code_page.h"
#include "ui/clipboard.h"

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

std::string FileBytes(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void WriteBytes(const std::filesystem::path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

std::string Bytes(std::wstring_view text) {
    return ToUtf8(text);
}

// Nothing can be opened.
HANDLE WINAPI RefuseCreateFile(LPCWSTR, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD, HANDLE) {
    SetLastError(ERROR_ACCESS_DENIED);
    return INVALID_HANDLE_VALUE;
}

BOOL WINAPI RefuseMoveFile(LPCWSTR, LPCWSTR, DWORD) {
    SetLastError(ERROR_SHARING_VIOLATION);
    return FALSE;
}

class ConfigWindow : public TConfigWindowDriver {
protected:
    // The settings file with protected credentials.
    std::string Ini(const std::string& destination, const std::string& connect, std::wstring_view user,
                    std::wstring_view password) {
        return "[CONFIG]\r\nNASDIR=" + destination + "\r\nCONNECT=" + connect +
               "\r\nUSER=" + Bytes(Protect(user)) + "\r\nPASS=" + Bytes(Protect(password)) + "\r\n";
    }
};

TEST_F(ConfigWindow, ShowsTheSettingsAndWritesThemBackAsTheyWere) {
    WriteBytes(iniPath, Ini("D:\\Backup", "1", L"gast", L"geheim") + "; eigenes\r\n[Fremd]\r\nx = 1\r\n");
    const std::string before = FileBytes(iniPath);
    Open();
    EXPECT_EQ(window.EdBackupPath.Text(), L"D:\\Backup");
    EXPECT_TRUE(window.cxCheckBox1.Checked());
    EXPECT_EQ(window.cxTextEdit1.Text(), L"gast");
    EXPECT_EQ(window.cxTextEdit2.Text(), L"geheim");
    EXPECT_EQ(window.Notice(), L"");
    EXPECT_TRUE(window.Close());
    EXPECT_EQ(FileBytes(iniPath), before);
    EXPECT_EQ(window.cxTextEdit2.Text(), L"") << "a hidden window keeps no password";
    EXPECT_FALSE(table.Modified());
}

TEST_F(ConfigWindow, AMissingFileGivesDefaultsAndIsWritten) {
    Open();
    EXPECT_EQ(window.EdBackupPath.Text(), L"");
    EXPECT_FALSE(window.cxCheckBox1.Checked());
    EXPECT_TRUE(window.Close());
    EXPECT_EQ(FileBytes(iniPath), "[CONFIG]\r\nNASDIR=\r\nCONNECT=0\r\nUSER=\r\nPASS=\r\n");
}

TEST_F(ConfigWindow, WhatIsTypedIsSavedWithoutLeavingTheField) {
    Open();
    Type(L"E:\\Sicherung");
    EXPECT_EQ(GetFocus(), window.EdBackupPath.Edit());
    Click(window.cxCheckBox1.Handle());
    SetFocus(window.cxTextEdit1.Edit());
    Type(L"gast");
    SetFocus(window.cxTextEdit2.Edit());
    Type(L"geheim");
    SendMessageW(window.Handle(), WM_CLOSE, 0, 0);
    EXPECT_FALSE(window.IsOpen());
    EXPECT_EQ(FileBytes(iniPath), Ini("E:\\Sicherung", "1", L"gast", L"geheim"));

    Open();
    EXPECT_EQ(window.EdBackupPath.Text(), L"E:\\Sicherung");
    EXPECT_EQ(window.cxTextEdit2.Text(), L"geheim");
    Press(VK_END);
    Type(L"2");
    window.acClose.Execute();
    EXPECT_FALSE(window.IsOpen());
    EXPECT_THAT(FileBytes(iniPath), HasSubstr("NASDIR=E:\\Sicherung2\r\n"));
}

TEST_F(ConfigWindow, FilesWrittenByHandAreReadAndKeepTheirShape) {
    const std::wstring text =
        L"; von Hand\r\n[config]\r\n nasdir =  D:\\Büro \r\nConnect= 1\r\nuser=\r\nPass=\r\n";
    const std::string utf16(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t));
    const std::string plain = *TSystemCodePage().Encode(text);
    for (const std::string& bytes : {plain, "\xEF\xBB\xBF" + ToUtf8(text), "\xFF\xFE" + utf16}) {
        WriteBytes(iniPath, bytes);
        Open();
        EXPECT_EQ(window.EdBackupPath.Text(), L"D:\\Büro");
        EXPECT_TRUE(window.cxCheckBox1.Checked());
        EXPECT_TRUE(window.Close());
        const std::string after = FileBytes(iniPath);
        EXPECT_EQ(after.substr(0, 3), bytes.substr(0, 3));
        Open();
        EXPECT_EQ(window.EdBackupPath.Text(), L"D:\\Büro");
        EXPECT_TRUE(window.Close());
        EXPECT_EQ(FileBytes(iniPath), after);
    }
}

TEST_F(ConfigWindow, ADestinationOutsideTheCodePageSurvives) {
    Open();
    Type(L"\\\\nas\\日本");
    EXPECT_TRUE(window.Close());
    Open();
    EXPECT_EQ(window.EdBackupPath.Text(), L"\\\\nas\\日本");
    EXPECT_TRUE(window.Close());
}

TEST_F(ConfigWindow, CredentialsThatDoNotDecryptStayUntilTheyAreChanged) {
    WriteBytes(iniPath, "[CONFIG]\r\nNASDIR=D:\\B\r\nCONNECT=1\r\nUSER=kaputt\r\nPASS=AAAA\r\n");
    const std::string before = FileBytes(iniPath);
    Open();
    EXPECT_EQ(window.cxTextEdit1.Text(), L"");
    EXPECT_THAT(Bytes(window.Notice()), HasSubstr("entschlüsselt"));
    EXPECT_TRUE(window.Close());
    EXPECT_EQ(FileBytes(iniPath), before);

    Open();
    SetFocus(window.cxTextEdit1.Edit());
    Type(L"neu");
    EXPECT_TRUE(window.Close());
    const std::string after = FileBytes(iniPath);
    EXPECT_THAT(after, HasSubstr("USER=" + Bytes(Protect(L"neu"))));
    EXPECT_THAT(after, HasSubstr("PASS=AAAA"));
    Open();
    EXPECT_THAT(Bytes(window.Notice()), HasSubstr("Das gespeicherte Passwort"));
    picked = L"C:\\windows";
    window.acGetDirectory.Execute();
    EXPECT_THAT(Bytes(window.Notice()), HasSubstr("Das gespeicherte Passwort"));
    EXPECT_TRUE(window.Close());
}

TEST_F(ConfigWindow, AFileThatCannotBeReadIsNotOverwritten) {
    WriteBytes(iniPath, Ini("D:\\Backup", "1", L"gast", L"geheim"));
    const std::string before = FileBytes(iniPath);
    calls.CreateFileW = &RefuseCreateFile;
    Open();
    EXPECT_THAT(Bytes(window.Notice()), HasSubstr("NASConf.ini"));
    // The file comes back while the window is open; only what the user entered goes into it.
    calls.CreateFileW = SystemPlatformCalls().CreateFileW;
    SetFocus(window.cxTextEdit1.Edit());
    Type(L"neu");
    EXPECT_TRUE(window.Close());
    EXPECT_EQ(FileBytes(iniPath), Ini("D:\\Backup", "1", L"neu", L"geheim"));
}

TEST_F(ConfigWindow, AFailedSaveIsToldAndNothingIsLost) {
    WriteBytes(iniPath, Ini("D:\\Backup", "0", L"", L""));
    const std::string before = FileBytes(iniPath);
    Open();
    Type(L"E:");
    calls.MoveFileExW = &RefuseMoveFile;
    answer = false;
    EXPECT_FALSE(window.Close());
    EXPECT_THAT(Bytes(question), HasSubstr("NASConf.ini"));
    EXPECT_TRUE(window.IsOpen());
    EXPECT_THAT(Bytes(window.EdBackupPath.Text()), HasSubstr("E:"));
    EXPECT_EQ(FileBytes(iniPath), before);
    // A run asks nothing.
    question.clear();
    EXPECT_FALSE(window.CloseForRun());
    EXPECT_TRUE(window.IsOpen());
    EXPECT_EQ(question, L"");
    EXPECT_THAT(Bytes(window.Notice()), HasSubstr("NASConf.ini"));
    calls.MoveFileExW = SystemPlatformCalls().MoveFileExW;
    EXPECT_TRUE(window.CloseForRun());
    EXPECT_FALSE(window.IsOpen());
    EXPECT_NE(FileBytes(iniPath), before);
}

TEST_F(ConfigWindow, EndingTheProgramSavesWithoutAQuestion) {
    Open();
    Type(L"E:\\Ende");
    FocusCell(0, kDirectory);
    Press(VK_F2);
    Type(L"C:\\Ende");
    DestroyWindow(owner);
    EXPECT_FALSE(window.IsOpen());
    EXPECT_EQ(question, L"");
    EXPECT_THAT(FileBytes(iniPath), HasSubstr("NASDIR=E:\\Ende\r\n"));
    EXPECT_EQ(table.Rows()[0].Directory, L"C:\\Ende");
}

TEST_F(ConfigWindow, EveryKindOfCellIsEditedByKeyboard) {
    Open();
    const SourceFolderRow before = table.Rows()[1];
    FocusCell(1, kAktive);
    Type(L" ");
    EXPECT_EQ(table.Rows()[1].Aktive, !before.Aktive.value());

    FocusCell(1, kDirectory);
    Press(VK_F2);
    Press(VK_END);
    Type(L"\\Unten");
    Press(VK_RETURN);
    EXPECT_EQ(table.Rows()[1].Directory, *before.Directory + L"\\Unten");
    Type(L"D:\\Neu");
    Press(VK_DOWN);
    EXPECT_EQ(table.Rows()[1].Directory, L"D:\\Neu");
    EXPECT_EQ(table.RowNumber(), 2u);
    Press(VK_UP);

    FocusCell(1, kExtensions);
    Type(L".txt");
    Press(VK_ESCAPE);
    EXPECT_EQ(table.Rows()[1].Extensions, before.Extensions);
    Type(L".txt,");
    Type(L"\n.log");
    Press(VK_RETURN);
    EXPECT_EQ(table.Rows()[1].Extensions, L".txt,\r\n.log");

    FocusCell(1, kMode);
    Type(L" ");
    Press(VK_DOWN);
    Press(VK_DOWN);
    Press(VK_RETURN);
    EXPECT_EQ(table.Rows()[1].ExtensionMode, L"EX");
    EXPECT_EQ(window.cxGrid.CellCaption(1, kMode), L"Ausschließen");
    EXPECT_EQ(table.State(), TSourceFolderTable::TState::Browse);
    EXPECT_TRUE(table.Modified());

    EXPECT_TRUE(window.Close());
    Open();
    EXPECT_EQ(table.Rows()[1].Directory, L"D:\\Neu");
    EXPECT_EQ(window.cxGrid.CellCaption(1, kExtensions), L".txt,\r\n.log");
    EXPECT_TRUE(window.Close());
}

TEST_F(ConfigWindow, CellsAreEditedByMouse) {
    Open();
    const bool hidden = table.Rows()[2].Hidden.value();
    ClickCell(2, kHidden);
    EXPECT_EQ(table.Rows()[2].Hidden, !hidden);
    EXPECT_EQ(table.RowNumber(), 2u) << "the grid's row is the table's";
    ClickCell(2, kMode);
    ClickCell(2, kMode);
    ASSERT_TRUE(window.cxGrid.Editing());
    // The middle choice of the panel.
    RECT panel{};
    GetClientRect(window.cxGrid.EditorHandle(), &panel);
    ClickAt(window.cxGrid.EditorHandle(), 10, panel.bottom / 2);
    EXPECT_FALSE(window.cxGrid.Editing());
    EXPECT_EQ(table.Rows()[2].ExtensionMode, L"IN");

    // A click counts for what stood there, also when an edit that it ends makes a row higher.
    ClickCell(0, kDirectory);
    ClickCell(0, kDirectory);
    Type(L"C:\\Ein Ordner mit einem langen Namen\\noch einer\\und noch einer davon");
    ClickCell(1, kAktive);
    EXPECT_THAT(Bytes(*table.Rows()[0].Directory), HasSubstr("noch einer davon"));
    EXPECT_EQ(table.Rows()[1].Aktive, false);
}

TEST_F(ConfigWindow, AnOpenEditIsKeptWhateverTakesTheFocus) {
    std::optional<std::wstring> closedWith;
    window.OnClosed = [&] { closedWith = table.Rows()[0].Directory; };
    Open();
    const std::vector<std::pair<std::wstring, std::function<void()>>> ways{
        {L"C:\\Feld", [&] { SetFocus(window.EdBackupPath.Edit()); }},
        {L"C:\\Anderes", [&] { SetFocus(owner); }},
        {L"C:\\Breite",
         [&] {
             SendMessageW(window.Handle(), WM_SIZE, 0, 0);
             SetFocus(owner);
         }},
        {L"C:\\Knopf", [&] { window.acClose.Execute(); }}};
    for (const auto& [text, leave] : ways) {
        FocusCell(0, kDirectory);
        Press(VK_F2);
        Type(text);
        leave();
        EXPECT_EQ(table.Rows()[0].Directory, text);
    }
    EXPECT_FALSE(window.IsOpen());
    EXPECT_EQ(closedWith, L"C:\\Knopf");
}

TEST_F(ConfigWindow, AllOfACheckBoxCellToggles) {
    Open();
    const TGridArea cell = window.cxGrid.Layout().Cell(1, window.cxGridDBTv.PositionOf(kAktive));
    ClickAt(window.cxGrid.Handle(), cell.left + 2, cell.bottom - 3);
    EXPECT_EQ(table.Rows()[1].Aktive, false);
}

TEST_F(ConfigWindow, EscapeClosesAsTheButtonDoes) {
    const std::function<HWND()> controls[] = {[&] { return window.EdBackupPath.Edit(); },
                                              [&] { return window.cxGrid.Handle(); },
                                              [&] { return window.cxCheckBox1.Handle(); }};
    for (const auto& control : controls) {
        Open();
        window.EdBackupPath.SetText(L"E:\\Esc");
        SetFocus(control());
        Press(VK_ESCAPE);
        EXPECT_FALSE(window.IsOpen());
        EXPECT_THAT(FileBytes(iniPath), HasSubstr("NASDIR=E:\\Esc"));
        std::filesystem::remove(iniPath);
    }
}

TEST_F(ConfigWindow, APastedTextThatIsTooLongIsRefused) {
    Open();
    FocusCell(0, kDirectory);
    Press(VK_F2);
    ASSERT_TRUE(CopyToClipboard(window.Handle(), std::wstring(5000, L'x')));
    SendMessageW(window.cxGrid.EditorHandle(), WM_PASTE, 0, 0);
    Press(VK_RETURN);
    EXPECT_EQ(table.Rows()[0].Directory, L"C:\\Daten");
    EXPECT_THAT(Bytes(window.Notice()), HasSubstr("255"));
    EXPECT_THAT(Bytes(window.Notice()), HasSubstr("5000"));
    FocusCell(0, kAktive);
    Type(L" ");
    EXPECT_EQ(window.Notice(), L"") << "what follows is good";

    // Nothing closes over an edit that it has just dropped; whoever has seen that may close.
    const std::function<bool()> closings[] = {
        [&] { return window.acClose.Execute(), !window.IsOpen(); },
        [&] { return SetFocus(owner), window.CloseForRun(); },
    };
    for (const auto& close : closings) {
        Open();
        FocusCell(0, kDirectory);
        Press(VK_F2);
        SetWindowTextW(window.cxGrid.EditorHandle(), std::wstring(300, L'x').c_str());
        EXPECT_FALSE(close());
        EXPECT_TRUE(window.IsOpen());
        EXPECT_THAT(Bytes(window.Notice()), HasSubstr("300"));
        EXPECT_TRUE(close());
    }
}

TEST_F(ConfigWindow, SaysWhichRowRulesTheOthers) {
    table.Assign({{true, L"C:\\windows", true, L".jpg", L"IN", false, false},
                  {true, L"C:\\windows\\system32", true, L".jpg", L"IN", false, false}});
    Open();
    EXPECT_EQ(window.Warnings(), L"");
    ClickCell(1, kHistory);
    EXPECT_THAT(Bytes(window.Warnings()), AllOf(HasSubstr("zurzeit Zeile 2"), HasSubstr("mit Haken")));
    table.MoveTo(0);
    EXPECT_THAT(Bytes(window.Warnings()), AllOf(HasSubstr("zurzeit Zeile 1"), HasSubstr("ohne Haken")));
    FocusCell(0, kExtensions);
    Type(L".txt");
    Press(VK_RETURN);
    EXPECT_THAT(Bytes(window.Warnings()), HasSubstr("der von Zeile 2"));
    EXPECT_FALSE(window.dsMemData.Dimmed(0, kExtensions));
    table.Edit();
    table.Working().ExtensionMode = L"NO";
    table.Post();
    EXPECT_TRUE(window.dsMemData.Dimmed(0, kExtensions));
    // Header and cut cell explain themselves.
    const TGridArea header = window.cxGrid.Layout().Header(window.cxGridDBTv.PositionOf(kHistory));
    EXPECT_THAT(Bytes(window.cxGrid.HintAt({header.left + 9, 5})), HasSubstr("Markierung"));
    const std::wstring longFolder = L"C:\\" + std::wstring(250, L'x');
    table.Edit();
    table.Working().Directory = longFolder;
    table.Post();
    const TGridArea cell = window.cxGrid.Layout().Cell(0, window.cxGridDBTv.PositionOf(kDirectory));
    EXPECT_EQ(window.cxGrid.HintAt({cell.left + 9, cell.top + 5}), longFolder);
}

// Asks as a NAS that sleeps: no answer to this folder until the test lets it come.
std::atomic<bool> nasSleeps;
BOOL WINAPI AttributesFromSleepingNas(LPCWSTR path, GET_FILEEX_INFO_LEVELS level, LPVOID data) {
    while (nasSleeps && std::wstring_view(path).find(L"schlaf") != std::wstring_view::npos) {
        Sleep(5);
    }
    return GetFileAttributesExW(path, level, data);
}

TEST_F(ConfigWindow, AFolderThatIsNotThereIsMarkedWithoutWaitingForOne) {
    table.Assign({{true, L"\\\\schlaf\\nas", true, L"", L"NO", false, false},
                  {true, L"C:\\windows", true, L"", L"NO", false, false},
                  {true, L"C:\\fehlt", true, L"", L"NO", false, false}});
    calls.GetFileAttributesExW = &AttributesFromSleepingNas;
    nasSleeps = true;
    Open();
    const auto waitFor = [&](const std::string& text) {
        for (int round = 0; round < 400 && Bytes(window.Warnings()).find(text) == std::string::npos;
             ++round) {
            Sleep(5);
            ProcessPendingMessages();
        }
        EXPECT_THAT(Bytes(window.Warnings()), HasSubstr(text));
    };
    waitFor("Zeile 3 ist nicht vorhanden");
    const TGridArea mark = window.cxGrid.Layout().Indicator(2);
    EXPECT_NE(window.cxGrid.HintAt({mark.left + 3, mark.top + 3}), L"");
    ClickCell(1, kDirectory);
    ClickCell(1, kDirectory);
    Type(L"C:\\auch nicht");
    Press(VK_RETURN);
    EXPECT_EQ(table.Rows()[1].Directory, L"C:\\auch nicht") << "nothing is refused";
    waitFor("Zeilen 2 und 3");
    ClickCell(2, kAktive);
    EXPECT_EQ(window.cxGrid.HintAt({mark.left + 3, mark.top + 3}), L"") << "a row that counts for nothing";
    EXPECT_TRUE(window.Close());
    window.Destroy();
    nasSleeps = false;
}

TEST_F(ConfigWindow, FoldersAreInsertedAtTheEnd) {
    Open();
    picked = std::nullopt;
    window.acGetDirectory.Execute();
    EXPECT_EQ(table.RecordCount(), 3u);
    EXPECT_FALSE(table.Modified());
    EXPECT_EQ(pickerTitle, L"Select Directory to copy...");
    EXPECT_EQ(pickerStart, L"");

    picked = L"C:\\gibt es nicht";
    window.acGetDirectory.Execute();
    EXPECT_EQ(table.RecordCount(), 3u);
    EXPECT_THAT(Bytes(window.Notice()), HasSubstr("nicht vorhanden"));

    const auto picker = std::exchange(
        window.ShellBrowserDialog,
        [](HWND, const std::wstring&, const std::wstring&) -> std::optional<std::wstring> {
            throw std::system_error(ERROR_ACCESS_DENIED, std::system_category(), "IFileOpenDialog");
        });
    window.acGetDirectory.Execute();
    EXPECT_THAT(Bytes(window.Notice()), HasSubstr("Die Ordnerauswahl"));
    window.ShellBrowserDialog = picker;

    picked = L"C:\\windows";
    window.acGetDirectory.Execute();
    ASSERT_EQ(table.RecordCount(), 4u);
    EXPECT_EQ(table.Rows()[3],
              (SourceFolderRow{true, L"C:\\windows", true, L".pdf,.docx,.xlsx,.jpg", L"NO", false, false}));
    EXPECT_EQ(table.RowNumber(), 3u);
    EXPECT_EQ(window.Notice(), L"");
}

TEST_F(ConfigWindow, TheEllipsisButtonsStartWhereTheFieldPoints) {
    Open();
    picked = L"C:\\windows";
    FocusCell(1, kDirectory);
    const std::wstring before = *table.Rows()[1].Directory;
    Press(VK_F4);
    EXPECT_EQ(pickerStart, before);
    EXPECT_EQ(table.Rows()[1].Directory, L"C:\\windows");

    window.EdBackupPath.SetText(L"D:\\Ziel");
    Click(window.EdBackupPath.Button());
    EXPECT_EQ(pickerStart, L"D:\\Ziel");
    EXPECT_EQ(window.EdBackupPath.Text(), L"C:\\windows");
    EXPECT_FALSE(std::filesystem::exists(iniPath)) << "saved on closing only";
}

TEST_F(ConfigWindow, ARowGoesOnlyAfterAQuestion) {
    Open();
    FocusCell(1, kMode);
    answer = false;
    Press(VK_DELETE);
    EXPECT_EQ(table.RecordCount(), 3u);
    EXPECT_THAT(Bytes(question), HasSubstr(Bytes(*table.Rows()[1].Directory)));
    answer = true;
    const std::wstring next = *table.Rows()[2].Directory;
    Press(VK_DELETE);
    ASSERT_EQ(table.RecordCount(), 2u);
    EXPECT_EQ(table.Current().Directory, next);
}

TEST_F(ConfigWindow, ARowThatTheTableRefusesIsToldAndLeft) {
    table.Assign({{true, std::wstring(300, L'x'), true, L"", L"NO", false, false}});
    Open();
    FocusCell(0, kAktive);
    Type(L" ");
    EXPECT_EQ(table.Rows()[0].Aktive, true);
    EXPECT_EQ(table.State(), TSourceFolderTable::TState::Browse);
    EXPECT_THAT(Bytes(window.Notice()), HasSubstr("255"));
}

TEST_F(ConfigWindow, TheLayoutOfTheGridIsKept) {
    Open();
    window.cxGridDBTv.Move(0, 2);
    window.cxGridDBTv.SetVisible(kHidden, false);
    const std::wstring layout = window.cxGridDBTv.Store();
    EXPECT_TRUE(window.Close());
    {
        TfmConfig second(calls, table, folder);
        second.Show(owner);
        EXPECT_EQ(second.cxGridDBTv.Store(), layout);
        EXPECT_TRUE(second.Close());
    }
    RegSetKeyValueW(HKEY_CURRENT_USER, L"Software\\Quentar\\Vardeko\\GUI\\GridStore", L"ConfigGrid",
                    REG_BINARY, "\xFF\x01", 2);
    TfmConfig third(calls, table, folder);
    third.Show(owner);
    EXPECT_EQ(third.cxGridDBTv.Store(), TGridColumns(SourceFolderColumns()).Store());
    EXPECT_EQ(third.Notice(), L"");
}

TEST_F(ConfigWindow, ColumnsAreSizedAndMovedByMouse) {
    Open();
    const auto header = [&](std::size_t position) { return window.cxGrid.Layout().Header(position); };
    const HWND grid = window.cxGrid.Handle();
    const TGridArea first = header(0);
    Drag(grid, {first.right, 5}, {first.right + 30, 5});
    EXPECT_EQ(header(0).Width(), first.Width() + 30);
    EXPECT_EQ(window.cxGridDBTv.Visible()[0], kAktive);
    Drag(grid, {header(0).left + 10, 5}, {header(2).left + 10, 5});
    EXPECT_THAT(window.cxGridDBTv.Visible(), ElementsAre(1, 2, 0, 3, 4, 5, 6));
}

TEST_F(ConfigWindow, RowsOutOfSightAreReachedByTheScrollBar) {
    Open();
    const HWND bar = FindWindowExW(window.cxGrid.Handle(), nullptr, L"VardekoScrollBar", nullptr);
    EXPECT_FALSE(IsWindowVisible(bar));
    for (int row = 0; row < 40; ++row) {
        table.Append();
        table.Post();
    }
    ASSERT_TRUE(IsWindowVisible(bar));
    const TGridLayout& layout = window.cxGrid.Layout();
    EXPECT_EQ(layout.EndOfVisibleRows(), 43u) << "the new row is seen";
    const int bottom = layout.ScrollBar().Height() - 2;
    Drag(bar, {3, bottom}, {3, -500});
    EXPECT_EQ(layout.FirstVisibleRow(), 0u);
    const std::size_t page = layout.EndOfVisibleRows();
    ClickAt(bar, 3, bottom);
    EXPECT_GE(layout.FirstVisibleRow(), page - 1);
    EXPECT_LE(layout.FirstVisibleRow(), page);
    ClickAt(bar, 3, 1);
    EXPECT_EQ(layout.FirstVisibleRow(), 0u);
}

TEST_F(ConfigWindow, TheTabKeyReachesEverythingAndGetsOut) {
    Open();
    std::vector<HWND> visited;
    for (int step = 0; step < 6; ++step) {
        visited.push_back(GetFocus());
        PressForReal(VK_TAB);
    }
    EXPECT_THAT(visited, ElementsAre(window.EdBackupPath.Edit(), window.EdBackupPath.Button(),
                                     window.cxCheckBox1.Handle(), window.cxTextEdit1.Edit(),
                                     window.cxTextEdit2.Edit(), window.cxGrid.Handle()));
    for (int step = 0; step < 5; ++step) {
        PressForReal(VK_TAB);
    }
    EXPECT_EQ(GetFocus(), window.cxGrid.Handle());
    EXPECT_EQ(window.cxGrid.FocusedColumn(), kMode);
    PressForReal(VK_TAB);
    EXPECT_EQ(GetFocus(), window.dxBarManager1Bar1.ButtonOf(window.acClose));
    Press(VK_RETURN);
    EXPECT_FALSE(window.IsOpen());
}

// What a screen reader asks of a window, or of an object in it.
class TScreenReader {
public:
    explicit TScreenReader(HWND window) {
        EXPECT_EQ(AccessibleObjectFromWindow(window, static_cast<DWORD>(OBJID_CLIENT), IID_IAccessible,
                                             reinterpret_cast<void**>(&object)),
                  S_OK);
    }
    explicit TScreenReader(IDispatch* child) {
        EXPECT_EQ(child->QueryInterface(IID_IAccessible, reinterpret_cast<void**>(&object)), S_OK);
        child->Release();
    }
    TScreenReader(const TScreenReader&) = delete;
    TScreenReader& operator=(const TScreenReader&) = delete;
    ~TScreenReader() { object->Release(); }

    static VARIANT Child(long number) {
        VARIANT child{};
        child.vt = VT_I4;
        child.lVal = number;
        return child;
    }
    std::wstring Text(HRESULT (STDMETHODCALLTYPE IAccessible::*get)(VARIANT, BSTR*), VARIANT child) const {
        BSTR answered = nullptr;
        EXPECT_EQ((object->*get)(child, &answered), S_OK);
        std::wstring copy = answered != nullptr ? answered : L"";
        SysFreeString(answered);
        return copy;
    }
    std::wstring Name(VARIANT child) const { return Text(&IAccessible::get_accName, child); }
    VARIANT Focus() const {
        VARIANT child{};
        EXPECT_EQ(object->get_accFocus(&child), S_OK);
        return child;
    }
    long State(VARIANT child) const {
        VARIANT state{};
        EXPECT_EQ(object->get_accState(child, &state), S_OK);
        return state.lVal;
    }
    long Role(VARIANT child) const {
        VARIANT role{};
        EXPECT_EQ(object->get_accRole(child, &role), S_OK);
        return role.lVal;
    }
    RECT Area(VARIANT child) const {
        RECT area{};
        EXPECT_EQ(object->accLocation(&area.left, &area.top, &area.right, &area.bottom, child), S_OK);
        return area;
    }

    IAccessible* object = nullptr;
};

TEST_F(ConfigWindow, AScreenReaderHearsRowColumnAndValue) {
    Open();
    FocusCell(1, kMode);
    const TScreenReader grid(window.cxGrid.Handle());
    const VARIANT self = TScreenReader::Child(CHILDID_SELF);
    const VARIANT cell = grid.Focus();
    EXPECT_EQ(grid.Name(cell), L"Modus");
    EXPECT_EQ(grid.Text(&IAccessible::get_accValue, cell), L"Aus");
    EXPECT_EQ(grid.Text(&IAccessible::get_accDescription, cell), L"Zeile 2 von 3");

    long rows = 0;
    ASSERT_EQ(grid.object->get_accChildCount(&rows), S_OK);
    EXPECT_EQ(rows, 3);
    IDispatch* child = nullptr;
    ASSERT_EQ(grid.object->get_accChild(TScreenReader::Child(2), &child), S_OK);
    const TScreenReader row(child);
    EXPECT_EQ(row.Name(self), L"Zeile 2 von 3: " + *table.Rows()[1].Directory);
    EXPECT_EQ(row.Role(self), ROLE_SYSTEM_ROW);
    EXPECT_EQ(row.Focus().lVal, 7);
    EXPECT_EQ(row.Name(row.Focus()), L"Modus");
    const RECT area = row.Area(self);  // left, top, width and height
    const RECT last = row.Area(row.Focus());
    EXPECT_EQ(area.top, last.top);
    EXPECT_EQ(area.left + area.right, last.left + last.right);
    EXPECT_GT(area.right, last.right);
    VARIANT hit{};
    ASSERT_EQ(row.object->accHitTest(last.left + 1, last.top + 1, &hit), S_OK);
    EXPECT_EQ(hit.lVal, 7);
    VARIANT next{};
    ASSERT_EQ(row.object->accNavigate(NAVDIR_NEXT, self, &next), S_OK);
    ASSERT_EQ(next.vt, VT_DISPATCH);
    EXPECT_EQ(TScreenReader(next.pdispVal).Name(self).substr(0, 13), L"Zeile 3 von 3");
    EXPECT_EQ(row.object->accNavigate(NAVDIR_NEXT, TScreenReader::Child(7), &next), S_FALSE);

    const VARIANT active = TScreenReader::Child(1);  // the check box at the beginning of the row
    EXPECT_EQ(row.Name(active), L"Aktiv");
    EXPECT_NE(row.State(active) & STATE_SYSTEM_CHECKED, 0);
    ASSERT_EQ(row.object->accDoDefaultAction(active), S_OK);
    EXPECT_EQ(table.Rows()[1].Aktive, false);
    VARIANT state{};
    EXPECT_EQ(row.object->get_accState(TScreenReader::Child(8), &state), E_INVALIDARG);
    EXPECT_EQ(grid.object->get_accState(TScreenReader::Child(4), &state), E_INVALIDARG);
    DestroyWindow(window.Handle());
    EXPECT_TRUE(FAILED(row.object->get_accFocus(&state))) << "the objects outlive their window";
}

TEST_F(ConfigWindow, AScreenReaderHearsTheModesWhileTheyAreGoneThrough) {
    Open();
    FocusCell(1, kMode);
    Press(VK_F2);
    const TScreenReader panel(window.cxGrid.EditorHandle());
    EXPECT_EQ(panel.Name(TScreenReader::Child(CHILDID_SELF)), L"Modus");
    EXPECT_EQ(panel.Name(panel.Focus()), L"Aus");
    Press(VK_DOWN);
    EXPECT_EQ(panel.Name(panel.Focus()), L"Einschließen");
    EXPECT_EQ(panel.Role(panel.Focus()), ROLE_SYSTEM_RADIOBUTTON);
    EXPECT_NE(panel.State(panel.Focus()) & STATE_SYSTEM_CHECKED, 0);
    EXPECT_EQ(panel.State(TScreenReader::Child(1)) & STATE_SYSTEM_CHECKED, 0);
    ASSERT_EQ(panel.object->accDoDefaultAction(TScreenReader::Child(3)), S_OK);
    EXPECT_EQ(table.Rows()[1].ExtensionMode, L"EX");
}

TEST_F(ConfigWindow, StandsInTheMiddleOfItsOwnerThenWhereItWasLeft) {
    Open();
    const auto area = [](HWND handle) {
        RECT rect{};
        GetWindowRect(handle, &rect);
        return rect;
    };
    RECT client{};
    GetClientRect(window.Handle(), &client);
    EXPECT_EQ(client.right, 717);
    EXPECT_EQ(client.bottom, 435);
    EXPECT_NEAR(area(window.Handle()).left + area(window.Handle()).right,
                area(owner).left + area(owner).right, 1);
    EXPECT_NE(GetWindowLongPtrW(window.Handle(), GWL_EXSTYLE) & WS_EX_TOPMOST, 0);
    SetWindowPos(window.Handle(), nullptr, 30, 20, 900, 600, SWP_NOZORDER);
    EXPECT_TRUE(window.Close());
    {
        TfmConfig second(calls, table, folder);
        second.Show(owner);
        const RECT place = area(second.Handle());
        EXPECT_EQ(place.left, 30);
        EXPECT_EQ(place.top, 20);
        EXPECT_EQ(place.right - place.left, 900);
        EXPECT_EQ(place.bottom - place.top, 600);
        EXPECT_TRUE(second.Close());
    }
}

TEST_F(ConfigWindow, AnotherScaleLaysEverythingOutAnew) {
    Open();
    const int height = window.cxGrid.Layout().Metrics().indicatorWidth;
    RECT area{0, 0, 1400, 900};
    SendMessageW(window.Handle(), WM_DPICHANGED, MAKEWPARAM(192, 192), reinterpret_cast<LPARAM>(&area));
    EXPECT_EQ(window.cxGrid.Layout().Metrics().indicatorWidth, 2 * height);
    RECT now{};
    GetWindowRect(window.Handle(), &now);
    EXPECT_EQ(now.right - now.left, 1400);
    // Four times as large it would be larger than the screen.
    SendMessageW(window.Handle(), WM_DPICHANGED, MAKEWPARAM(384, 384), reinterpret_cast<LPARAM>(&area));
    RECT work{};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
    MINMAXINFO limits{};
    SendMessageW(window.Handle(), WM_GETMINMAXINFO, 0, reinterpret_cast<LPARAM>(&limits));
    EXPECT_LE(limits.ptMinTrackSize.x, work.right - work.left);
    EXPECT_LE(limits.ptMinTrackSize.y, work.bottom - work.top);
}

// What the tool tips say of a point of a control's own area.
std::wstring ToolTipAt(HWND control, POINT point) {
    std::wstring found;
    for (HWND tips = nullptr; (tips = FindWindowExW(nullptr, tips, TOOLTIPS_CLASSW, nullptr)) != nullptr;) {
        wchar_t text[200]{};
        TTHITTESTINFOW hit{};
        hit.hwnd = control;
        hit.pt = point;
        hit.ti.cbSize = sizeof(hit.ti);
        hit.ti.lpszText = text;
        if (GetWindowThreadProcessId(tips, nullptr) == GetCurrentThreadId() &&
            SendMessageW(tips, TTM_HITTESTW, 0, reinterpret_cast<LPARAM>(&hit)) != FALSE) {
            found = text;
        }
    }
    return found;
}

TEST_F(ConfigWindow, AButtonHasItsHintAlsoWhileItIsDisabled) {
    Open();
    const HWND bar = window.dxBarManager1Bar1.Handle();
    const HWND button = window.dxBarManager1Bar1.ButtonOf(window.acGetDirectory);
    RECT area{};
    GetWindowRect(button, &area);
    MapWindowPoints(nullptr, bar, reinterpret_cast<POINT*>(&area), 2);
    // The pointer is over the bar then.
    EXPECT_EQ(ToolTipAt(bar, {area.left + 5, area.top + 5}), window.acGetDirectory.Hint());
}

}  // namespace
