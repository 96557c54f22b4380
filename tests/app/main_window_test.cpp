// The main window with the real engine behind it, driven by messages.
#include "app/main_window.h"

#include <commctrl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>

#include "app/fake_shutdown.h"
#include "support/system_helpers.h"
#include "test_folder.h"
#include "texts/main_texts.h"
#include "texts/run_log_text.h"
#include "texts/run_texts.h"
#include "ui/device_context.h"

namespace {

// Slows every copy down, so that a test meets a run in the middle.
std::atomic<DWORD> copyMilliseconds = 0;
// Called in the middle of every copy, of one after the other.
std::function<void()> duringCopy;
std::mutex duringCopyMutex;
std::vector<EXECUTION_STATE> executionStates;
std::vector<std::wstring> opened;

BOOL WINAPI SlowCopy(LPCWSTR source, LPCWSTR target, LPPROGRESS_ROUTINE routine, LPVOID data, LPBOOL cancel,
                     DWORD flags) {
    Sleep(copyMilliseconds);
    {
        const std::lock_guard lock(duringCopyMutex);
        // By value: it may set another one.
        if (const auto call = duringCopy) {
            call();
        }
    }
    return CopyFileExW(source, target, routine, data, cancel, flags);
}

EXECUTION_STATE WINAPI RecordExecutionState(EXECUTION_STATE state) {
    executionStates.push_back(state);
    return ES_CONTINUOUS;
}

// Counts what the main window asks of the other windows.
class TFakeWindows final : public TCompanionWindows {
public:
    void ShowConfiguration(HWND) override { ++configurationsShown; }
    bool CloseConfiguration() override { return !userGoesOnEditing; }
    bool CloseConfigurationForRun() override { return !settingsCannotBeSaved; }
    void CheckForUpdate(bool silent, std::function<void()> finished) override {
        ++(silent ? silentChecks : shownChecks);
        if (onShow && !silent) {
            onShow();
        }
        if (finished) {
            finished();
        }
    }
    bool NewUpdateExists() const override { return newUpdateExists; }
    void CloseAllNow() override { ++closings; }

    int configurationsShown = 0;
    int silentChecks = 0;
    int shownChecks = 0;
    int closings = 0;
    bool userGoesOnEditing = false;
    bool settingsCannotBeSaved = false;
    bool newUpdateExists = false;
    std::function<void()> onShow;
};

class MainWindow : public testing::Test {
protected:
    MainWindow() {
        copyMilliseconds = 0;
        duringCopy = nullptr;
        executionStates.clear();
        TFakeShutdown::Reset();
        calls_ = TFakeShutdown::Calls();
        calls_.CopyFileExW = &SlowCopy;
        calls_.SetThreadExecutionState = &RecordExecutionState;
        configuration_ = ConfigurationFolder(SystemPlatformCalls());
        DeleteFileW((configuration_ + L"\\NASConf.Dat").c_str());
        SetDestination(destination_.Path());
    }
    ~MainWindow() override {
        // A WM_QUIT that is left over would end the next test's loops.
        window_.reset();
        MSG message{};
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        }
    }

    void SetDestination(const std::wstring& folder) {
        std::ofstream file(std::filesystem::path(configuration_ + L"\\NASConf.ini"), std::ios::binary);
        file << "[CONFIG]\r\nNASDIR=" << ToUtf8(folder) << "\r\n";
    }

    // Hidden, because showing a window takes its time here.
    TfmMain& Start(const TCommandLine& commandLine = {}, int showCommand = SW_HIDE) {
        window_ = std::make_unique<TfmMain>(calls_, commandLine);
        window_->FormCreate();
        dataModule_ = std::make_unique<TDM>(calls_);
        dataModule_->DataModuleCreate();
        dataModule_->MemData.Append();
        SourceFolderRow& row = dataModule_->MemData.Working();
        row.Aktive = row.Rekursiv = true;
        row.Directory = source_.Path();
        row.ExtensionMode = L"NO";
        dataModule_->MemData.Post();
        window_->Show(*dataModule_, windows_, showCommand);
        return *window_;
    }

    void AddFiles(int count) {
        for (int file = 0; file < count; ++file) {
            source_.Write(L"file" + std::to_wstring(file) + L".txt", "content");
        }
    }

    // The program's message loop, until something has come true or some seconds have passed.
    bool LoopUntil(const std::function<bool()>& condition, int seconds = 20) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
        while (!condition() && std::chrono::steady_clock::now() < end) {
            MSG message{};
            if (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
                HandleQueuedMessage(message);
            } else {
                window_->ApplicationIdle();
                Sleep(1);
            }
        }
        return condition();
    }

    HWND StopButton() { return FindWindowExW(ToolBar(), nullptr, L"BUTTON", L"Anhalten"); }
    HWND StartButton() { return FindWindowExW(ToolBar(), nullptr, L"BUTTON", L"Kopieren"); }
    HWND ToolBar() { return FindWindowExW(window_->Handle(), nullptr, L"VardekoToolBar", nullptr); }
    static void Click(HWND button) { PostMessageW(button, BM_CLICK, 0, 0); }

    // Whether rows that begin so follow each other somewhere in the list, newest first.
    bool HasRows(const std::vector<std::wstring>& beginnings) {
        const TStatusListModel& rows = window_->Rows();
        for (std::size_t first = 0; first + beginnings.size() <= rows.RowCount(); ++first) {
            std::size_t matching = 0;
            while (matching < beginnings.size() &&
                   rows.Text(first + matching).starts_with(beginnings[matching])) {
                ++matching;
            }
            if (matching == beginnings.size()) {
                return true;
            }
        }
        return false;
    }

    std::wstring HashFile() const { return destination_.Path() + L"\\" + HostName() + L"\\Vardeko.dat"; }

    TTestFolder source_;
    TTestFolder destination_;
    TPlatformCalls calls_;
    std::wstring configuration_;
    TFakeWindows windows_;
    std::unique_ptr<TfmMain> window_;
    std::unique_ptr<TDM> dataModule_;
};

TEST_F(MainWindow, ARunFromStartToEnd) {
    AddFiles(3);
    TfmMain& window = Start();
    EXPECT_TRUE(IsWindowEnabled(StartButton()));
    EXPECT_FALSE(IsWindowEnabled(StopButton()));
    EXPECT_EQ(window.ExitCode(), 0);

    SendMessageW(StartButton(), BM_CLICK, 0, 0);
    EXPECT_FALSE(IsWindowEnabled(StartButton()));
    EXPECT_TRUE(IsWindowEnabled(StopButton()));
    EXPECT_FALSE(window.acClose.Enabled());
    EXPECT_TRUE(window.acShutDown.Enabled());
    EXPECT_EQ(window.StatusBar().Text(2), L"0");
    EXPECT_EQ(window.ExitCode(), 1) << "not yet a success";

    ASSERT_TRUE(LoopUntil([] { return CopyIdle; }));
    EXPECT_TRUE(IsWindowEnabled(StartButton()));
    EXPECT_TRUE(HasRows({L"Fertig: ", L"Das Backup benötigte 0"}));
    const TStatusListModel& rows = window.Rows();
    EXPECT_EQ(rows.RowCount(), 7U);
    EXPECT_EQ(rows.Text(6).substr(0, 7), L"Start: ");
    EXPECT_EQ(rows.Status(6), kInfoStatus);
    int copied = 0;
    int ignored = 0;
    for (std::size_t row = 2; row < 6; ++row) {
        copied += rows.Status(row) == kFileNameStatus ? 1 : 0;
        ignored += rows.Status(row) == kIgnoreStatus ? 1 : 0;
    }
    EXPECT_EQ(copied, 3);
    EXPECT_EQ(ignored, 1);
    EXPECT_EQ(window.StatusBar().Text(2), L"21 B");
    EXPECT_EQ(window.ExitCode(), 0);
    EXPECT_TRUE(FileExists(calls_, HashFile()));
    EXPECT_EQ(executionStates,
              (std::vector<EXECUTION_STATE>{ES_CONTINUOUS | ES_SYSTEM_REQUIRED, ES_CONTINUOUS}));

    window.acStartCopy.Execute();
    EXPECT_EQ(rows.RowCount(), 1U) << "a new run begins with an empty list";
    ASSERT_TRUE(LoopUntil([] { return CopyIdle; }));
    EXPECT_EQ(rows.RowCount(), 4U) << "nothing was copied again";
}

TEST_F(MainWindow, StopInTheMiddleOfACopyAndStartAgainRightAway) {
    AddFiles(40);
    copyMilliseconds = 10;
    TfmMain& window = Start();
    window.acShutDown.Execute();
    EXPECT_EQ(window.acShutDown.Image(), TImageIndex::ShutDownChecked);
    window.acStartCopy.Execute();
    duringCopy = [this] {
        if (window_->Rows().RowCount() > 5) {
            duringCopy = nullptr;
            // Both at once: whether another copy begins before the stop is seen is a matter of the machine.
            Click(StopButton());
            Click(StartButton());
        }
    };
    // The first pass was stopped, and a new run started from within it.
    ASSERT_TRUE(LoopUntil([&] { return CopyIdle && window.ExitCode() == 0; }));
    EXPECT_EQ(destination_.FileCount(), 41U) << "the files and the hash table";
    EXPECT_FALSE(window.acShutDown.Checked());
    EXPECT_EQ(window.acShutDown.Image(), TImageIndex::ShutDown);
    EXPECT_TRUE(TFakeShutdown::asked.empty());
}

TEST_F(MainWindow, StopTellsItsThreeLinesAndAnswersWithinATenthOfASecond) {
    AddFiles(200);
    copyMilliseconds = 3;
    TfmMain& window = Start();
    std::chrono::steady_clock::time_point clicked;
    double milliseconds = 1000;
    // Three attempts: the machine may be busy with something else.
    for (int attempt = 0; attempt < 3 && milliseconds >= 100; ++attempt) {
        window.acStartCopy.Execute();
        duringCopy = [&] {
            if (window.Rows().RowCount() > 10) {
                duringCopy = nullptr;
                clicked = std::chrono::steady_clock::now();
                Click(StopButton());
            }
        };
        ASSERT_TRUE(LoopUntil([] { return CopyIdle; }));
        milliseconds =
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - clicked).count();
        EXPECT_TRUE(HasRows({L"Anwender Abbruch: ", L"Fertig: ", L"Das Backup benötigte "}));
        EXPECT_TRUE(window.acStartCopy.Enabled());
        EXPECT_EQ(window.ExitCode(), 1);
        EXPECT_TRUE(FileExists(calls_, HashFile())) << "what was copied is not forgotten";
    }
    EXPECT_LT(milliseconds, 100);
    wchar_t text[100] = L"?";
    EXPECT_EQ(GetWindowTextW(window.CurrentFileField(), text, 100), 0);
}

TEST_F(MainWindow, ReportsGoWhereTheirKindSays) {
    TfmMain& window = Start();
    window.SetMessage(L"status", TMessagePos::Status);
    window.SetMessage(L"bytes", TMessagePos::Bytes);
    window.SetMessage(L"row", TMessagePos::Memo);
    window.SetMessage(L"error", TMessagePos::Error);
    window.SetMessage(L"ignored", TMessagePos::Ignore);
    SendMessageW(window.Handle(), kProgressPositionMessage, 7, 0);
    window.SetMessage(L"42", TMessagePos::ThreadMsg);
    EXPECT_EQ(window.ProgressBar().Position(), 7);
    window.SetMessage(L"nothing", TMessagePos::MD5);
    window.SetMessage(L"nothing", static_cast<TMessagePos>(8));
    ASSERT_TRUE(LoopUntil([&] { return GetWindowTextLengthW(window.CurrentFileField()) == 2; }));
    EXPECT_EQ(window.StatusBar().Text(3), L"status");
    EXPECT_EQ(window.StatusBar().Text(2), L"bytes");
    const TStatusListModel& rows = window.Rows();
    ASSERT_EQ(rows.RowCount(), 3U);
    EXPECT_EQ(rows.Text(0), L"ignored");
    EXPECT_EQ(rows.Status(0), kIgnoreStatus);
    EXPECT_EQ(rows.Status(1), kErrorStatus);
    EXPECT_EQ(rows.Status(2), kFileNameStatus);
    window.SetMessage(L"name", TMessagePos::FileMsg);
    EXPECT_EQ(window.ProgressBar().Position(), 0);
    // Without a run nobody pumps for the last report: it shows all the same.
    EXPECT_TRUE(LoopUntil([&] { return GetWindowTextLengthW(window.CurrentFileField()) == 4; }, 1));
}

TEST_F(MainWindow, ProgressOfFilesBeyondFourGigabytes) {
    TfmMain& window = Start();
    const auto send = [&](UINT message, std::uint64_t value) {
        SendMessageW(window.Handle(), message, static_cast<WPARAM>(value & 0xFFFFFFFF),
                     static_cast<LPARAM>(static_cast<std::int32_t>(value >> 32)));
    };
    send(kProgressMaximumMessage, 0x5'FFFF'FFFF);
    EXPECT_EQ(window.ProgressBar().Maximum(), static_cast<double>(0x5'FFFF'FFFF));
    send(kProgressPositionMessage, 0x2'FFFF'FFFF);
    EXPECT_EQ(window.ProgressBar().Position(), static_cast<double>(0x2'FFFF'FFFF));
    EXPECT_NEAR(window.ProgressBar().Fraction(), 0.5, 1e-9);
    send(kProgressResetMessage, 0);
    EXPECT_EQ(window.ProgressBar().Fraction(), 0);
    EXPECT_EQ(window.ProgressBar().Maximum(), static_cast<double>(0x5'FFFF'FFFF));
}

TEST_F(MainWindow, UnattendedRunEndsTheProgramAlsoBehindAnotherWindow) {
    AddFiles(2);
    bool modalLoopEnded = false;
    windows_.newUpdateExists = true;
    windows_.onShow = [&] {
        // A window with a loop of its own, which nobody will close.
        const HWND other = CreateWindowExW(0, L"STATIC", L"Update", WS_POPUP | WS_VISIBLE, 0, 0, 50, 50,
                                           window_->Handle(), nullptr, nullptr, nullptr);
        RunMessageLoop([&] { return !IsWindow(other); }, [] {});
        modalLoopEnded = true;
    };
    TfmMain& window = Start({.copy = true});
    LoopUntil([&] { return !window.Exists(); });
    EXPECT_FALSE(window.Exists());
    EXPECT_EQ(windows_.silentChecks, 1);
    EXPECT_EQ(windows_.closings, 1);
    EXPECT_TRUE(modalLoopEnded);
    EXPECT_EQ(window.ExitCode(), 0);
    EXPECT_TRUE(TFakeShutdown::asked.empty());
}

TEST_F(MainWindow, ShutdownIsAskedForAtTheEndAndTheWindowStays) {
    TfmMain& window = Start({.copy = true, .shutDown = true});
    EXPECT_TRUE(window.acShutDown.Checked());
    EXPECT_EQ(window.acShutDown.Image(), TImageIndex::ShutDown) << "the switch does not change the image";
    ASSERT_TRUE(LoopUntil([] { return !TFakeShutdown::asked.empty(); }));
    EXPECT_EQ(TFakeShutdown::asked.back(),
              "InitiateSystemShutdownW (none), Vardeko Shutdown in progress, 60, 1, 0");
    EXPECT_FALSE(LoopUntil([&] { return !window.Exists(); }, 1));
    EXPECT_TRUE(window.acStartCopy.Enabled());
}

TEST_F(MainWindow, AFailedCopyShowsInTheExitCode) {
    AddFiles(1);
    calls_.CopyFileExW = [](LPCWSTR, LPCWSTR, LPPROGRESS_ROUTINE, LPVOID, LPBOOL, DWORD) WINAPI -> BOOL {
        SetLastError(ERROR_ACCESS_DENIED);
        return FALSE;
    };
    TfmMain& window = Start();
    window.acStartCopy.Execute();
    EXPECT_EQ(window.TaskbarProgress().State(), TTaskbarProgress::TState::Pulse);
    ASSERT_TRUE(LoopUntil([] { return CopyIdle; }));
    EXPECT_EQ(window.ExitCode(), 1);
    EXPECT_TRUE(
        HasRows({L"Fertig: ", L"Das Backup benötigte ", L"Nicht alles gesichert: 1 Datei nicht kopiert"}));
    EXPECT_EQ(window.Rows().Status(2), kErrorStatus);
    // Nobody has looked at the hidden window yet.
    window.ApplicationIdle();
    EXPECT_EQ(window.TaskbarProgress().State(), TTaskbarProgress::TState::Error);
    SendMessageW(window.Handle(), WM_ACTIVATE, WA_ACTIVE, 0);
    window.ApplicationIdle();
    EXPECT_EQ(window.TaskbarProgress().State(), TTaskbarProgress::TState::Hidden);

    const auto focusedText = [&] {
        const auto row =
            SendMessageW(window.ListHandle(), LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_FOCUSED);
        return window.Rows().Text(static_cast<std::size_t>(row));
    };
    const auto press = [&](WPARAM key) {
        MSG message{window.ListHandle(), WM_KEYDOWN, key, 0, 0, {}};
        HandleQueuedMessage(message);
    };
    press(VK_F8);
    EXPECT_EQ(focusedText().substr(0, 21), L"Nicht alles gesichert");
    press(VK_F8);
    EXPECT_EQ(focusedText(), source_.At(L"file0.txt"));
    press(VK_F8);
    EXPECT_EQ(focusedText(), source_.At(L"file0.txt")) << "there is no other";

    // Its copy was never made; the file itself is shown.
    calls_.ShellExecuteW = [](HWND, LPCWSTR, LPCWSTR file, LPCWSTR parameters, LPCWSTR, INT) -> HINSTANCE {
        opened.push_back(std::wstring(file) + L" " + parameters);
        return reinterpret_cast<HINSTANCE>(INT_PTR{42});
    };
    opened.clear();
    window.acShowFile.Execute();
    EXPECT_EQ(opened,
              std::vector<std::wstring>{L"explorer.exe /select,\"" + source_.At(L"file0.txt") + L"\""});
    window.acShowCopy.Execute();
    EXPECT_EQ(opened.size(), 1U);
    EXPECT_TRUE(HasRows({L"Nicht gefunden: "}));
}

// Keys as a user presses them, with the focus where the clicks and the run have left it.
TEST_F(MainWindow, NoKeyMeantForAnotherButtonArmsTheShutdown) {
    AddFiles(40);
    copyMilliseconds = 10;
    TfmMain& window = Start({}, SW_SHOW);
    SetForegroundWindow(window.Handle());
    SetFocus(window.ListHandle());
    const auto press = [](WPARAM key) {
        PostMessageW(GetFocus(), WM_KEYDOWN, key, 0);
        ProcessPendingMessages();
        PostMessageW(GetFocus(), WM_KEYUP, key, 0);
        ProcessPendingMessages();
    };
    const auto clickByMouse = [](HWND button) {
        PostMessageW(button, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(5, 5));
        PostMessageW(button, WM_LBUTTONUP, 0, MAKELPARAM(5, 5));
        ProcessPendingMessages();
    };
    clickByMouse(StartButton());
    EXPECT_FALSE(CopyIdle);
    EXPECT_EQ(GetFocus(), window.ListHandle());
    press(VK_RETURN);
    press(VK_SPACE);
    EXPECT_FALSE(window.acShutDown.Checked());
    clickByMouse(StopButton());
    EXPECT_TRUE(CopyIdle);

    SetFocus(StartButton());
    press(VK_SPACE);
    EXPECT_FALSE(CopyIdle);
    EXPECT_EQ(GetFocus(), StopButton());
    press(VK_SPACE);
    EXPECT_TRUE(CopyIdle);
    EXPECT_EQ(GetFocus(), StartButton());
    EXPECT_FALSE(window.acShutDown.Checked());
    BYTE keys[256]{};
    keys[VK_CONTROL] = 0x80;
    SetKeyboardState(keys);
    press('H');
    keys[VK_CONTROL] = 0;
    SetKeyboardState(keys);
    EXPECT_EQ(GetFocus(), FindWindowExW(ToolBar(), nullptr, L"BUTTON", MainTexts::ShutDown));
    EXPECT_FALSE(window.acShutDown.Checked());
    press(VK_SPACE);
    EXPECT_TRUE(window.acShutDown.Checked());
    press(VK_SPACE);
    EXPECT_FALSE(window.acShutDown.Checked());
    // Another action that is disabled under the focus.
    SetFocus(FindWindowExW(ToolBar(), nullptr, L"BUTTON", L"Einstellen"));
    window.acStartCopy.Execute();
    EXPECT_EQ(GetFocus(), window.ListHandle());
    window.acStopCopy.Execute();
}

TEST_F(MainWindow, ARunBeginsWithWhatWasEnteredOrNotAtAll) {
    TfmMain& window = Start();
    windows_.settingsCannotBeSaved = true;
    window.SetMessage(L"old.txt", TMessagePos::FileMsg);
    window.acStartCopy.Execute();
    EXPECT_TRUE(CopyIdle);
    EXPECT_EQ(window.Rows().RowCount(), 0U);
    windows_.settingsCannotBeSaved = false;
    window.acStartCopy.Execute();
    EXPECT_FALSE(CopyIdle);
    EXPECT_TRUE(LoopUntil([&] { return GetWindowTextLengthW(window.CurrentFileField()) == 0; }, 1))
        << "the file of the former run";
    ASSERT_TRUE(LoopUntil([] { return CopyIdle; }));
}

TEST_F(MainWindow, SettingsThatCannotBeSavedHoldUpNoUnattendedRun) {
    windows_.settingsCannotBeSaved = true;
    TfmMain& window = Start({.copy = true});
    EXPECT_TRUE(LoopUntil([&] { return !window.Exists(); }));
    EXPECT_EQ(window.ExitCode(), 0);
}

TEST_F(MainWindow, OpensWhereItWasClosedButOnTheScreen) {
    const auto reopenedAt = [this](const RECT& place) {
        Start({}, SW_SHOW);
        PlaceWindow(window_->Handle(), place);
        window_.reset();
        RECT now{};
        GetWindowRect(Start().Handle(), &now);
        return now;
    };
    const RECT place{30, 40, 730, 440};
    RECT now = reopenedAt(place);
    EXPECT_TRUE(EqualRect(&now, &place));
    RECT work{};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
    now = reopenedAt({work.right - 100, 40, work.right + 3000, 4000});
    EXPECT_TRUE(now.left >= work.left && now.right <= work.right && now.bottom <= work.bottom);
}

TEST_F(MainWindow, ClosedDuringARunItWaitsForTheFilesUnderWay) {
    AddFiles(100);
    TfmMain& window = Start();
    bool existedAfterwards = false;
    duringCopy = [&] {
        duringCopy = [&] { existedAfterwards = window.Exists(); };
        SendNotifyMessageW(window.Handle(), WM_CLOSE, 0, 0);
        Sleep(100);
    };
    window.acStartCopy.Execute();
    ASSERT_TRUE(LoopUntil([&] { return !window.Exists(); }));
    EXPECT_TRUE(existedAfterwards);
    EXPECT_EQ(window.ExitCode(), 1);
    EXPECT_LE(destination_.FileCount(), 9U) << "eight files and the hash table";
    window.EndDataModule();
    EXPECT_TRUE(FileExists(calls_, configuration_ + L"\\NASConf.Dat"));
}

TEST_F(MainWindow, WindowsIsAskedToWaitForARun) {
    AddFiles(3);
    TfmMain& window = Start();
    const auto mayEnd = [&](LPARAM reason) {
        return SendMessageW(window.Handle(), WM_QUERYENDSESSION, 0, reason) != 0;
    };
    EXPECT_TRUE(mayEnd(0));
    bool asked = false;
    duringCopy = [&] {
        asked = true;
        EXPECT_FALSE(mayEnd(0));
        EXPECT_FALSE(mayEnd(static_cast<LPARAM>(ENDSESSION_LOGOFF)));
        EXPECT_TRUE(mayEnd(static_cast<LPARAM>(ENDSESSION_CRITICAL)));
        EXPECT_EQ(TFakeShutdown::reason, kRunIsOnText);
    };
    window.acShutDown.Execute();
    window.acStartCopy.Execute();
    ASSERT_TRUE(LoopUntil([] { return CopyIdle; }));
    EXPECT_TRUE(asked);
    EXPECT_TRUE(mayEnd(0));
    EXPECT_EQ(TFakeShutdown::reason, L"");
    // The shutdown that this program has asked for is on its way, whatever is begun now.
    duringCopy = nullptr;
    window.acStartCopy.Execute();
    EXPECT_TRUE(mayEnd(0));
    ASSERT_TRUE(LoopUntil([] { return CopyIdle; }));
}

TEST_F(MainWindow, TheEndOfTheSessionFindsAProgramThatCannotStart) {
    // As while the box about a damaged table stands.
    window_ = std::make_unique<TfmMain>(calls_, TCommandLine{});
    window_->FormCreate();
    EXPECT_TRUE(SendMessageW(window_->Handle(), WM_QUERYENDSESSION, 0, 0));
    SendMessageW(window_->Handle(), WM_ENDSESSION, TRUE, 0);
    EXPECT_FALSE(window_->Exists());
}

TEST_F(MainWindow, TheEndOfTheSessionSavesBothTablesAtOnce) {
    AddFiles(30);
    TfmMain& window = Start();
    bool saved = false;
    copyMilliseconds = 10;
    TTimer ending(10, [&] {
        if (window.Rows().RowCount() > 3) {
            ending.SetEnabled(false);
            SendMessageW(window.Handle(), WM_ENDSESSION, TRUE, 0);
            saved = FileExists(calls_, configuration_ + L"\\NASConf.Dat") && FileExists(calls_, HashFile());
        }
    });
    ending.SetEnabled(true);
    window.acStartCopy.Execute();
    ASSERT_TRUE(LoopUntil([&] { return !window.Exists(); }));
    EXPECT_TRUE(saved);
    const auto size = destination_.Read(HostName() + L"\\Vardeko.dat")->size();
    EXPECT_GE(size, 42U + 2 * 78) << "closing the tables later does not empty the file";
}

TEST_F(MainWindow, ARunThatCannotStartWaitsForTheUserToStopIt) {
    SetDestination(destination_.At(L"missing"));
    TfmMain& window = Start();
    window.acStartCopy.Execute();
    EXPECT_FALSE(LoopUntil([] { return CopyIdle; }, 2));
    EXPECT_TRUE(HasRows({L"Error: Destination Directory does not exist, "}));
    EXPECT_EQ(window.TaskbarProgress().State(), TTaskbarProgress::TState::Error);
    Click(StopButton());
    ASSERT_TRUE(LoopUntil([] { return CopyIdle; }));
    EXPECT_EQ(window.ExitCode(), 1);
}

TEST_F(MainWindow, AMistakeInAHandlerEndsTheRunInsteadOfLeavingItHanging) {
    AddFiles(3);
    SetUnexpectedErrorHandler([this](const std::wstring& text) { window_->ReportUnexpectedError(text); });
    duringCopy = [] { throw std::runtime_error("out of order"); };
    TfmMain& window = Start({.copy = true});
    EXPECT_TRUE(LoopUntil([&] { return !window.Exists(); }));
    EXPECT_EQ(window.ExitCode(), 1);
    SetUnexpectedErrorHandler([](const std::wstring&) {});
}

TEST_F(MainWindow, ReindexAsksFirstAndCanBeStopped) {
    source_.Write(L"sub\\a.txt", "x");
    TfmMain& window = Start();
    EXPECT_EQ(FindWindowExW(ToolBar(), nullptr, L"BUTTON", L"Reindex NAS DB"), nullptr) << "it is hidden";
    bool agree = false;
    TTimer answering(20, [&] {
        if (const HWND box = FindWindowW(L"VardekoDialog", L"Vardeko")) {
            const HWND yes = FindWindowExW(box, nullptr, L"BUTTON", L"Ja");
            EXPECT_NE(GetFocus(), yes);
            PostMessageW(agree ? yes : GetFocus(), agree ? BM_CLICK : WM_KEYDOWN, agree ? 0 : VK_RETURN, 0);
        }
    });
    answering.SetEnabled(true);
    window.acReindex.Execute();
    EXPECT_EQ(window.Rows().RowCount(), 0U) << "Enter is a No";

    agree = true;
    std::vector<bool> enabled;
    const auto report = dataModule_->SetMessage;
    dataModule_->SetMessage = [&](TDM& sender, const std::wstring& text, TMessagePos kind,
                                  const std::wstring& reason) {
        enabled = {window.acStopCopy.Enabled(), window.acStartCopy.Enabled(), window.acClose.Enabled()};
        report(sender, text, kind, reason);
        window.acStopCopy.Execute();
    };
    static_cast<void>(CreateFolders(calls_, destination_.At(HostName())));
    dataModule_->MemData.Append();
    dataModule_->MemData.Working().Directory = L"C:\\fehlt";
    dataModule_->MemData.Post();
    window.acReindex.Execute();
    EXPECT_EQ(dataModule_->MemData.RowNumber(), 1U) << "the cursor is the user's";
    EXPECT_EQ(enabled, (std::vector<bool>{true, false, false}));
    EXPECT_TRUE(HasRows({L"Ende: "}));
    EXPECT_TRUE(HasRows({L"Start: "}));
    EXPECT_TRUE(HasRows({L"Anwender Abbruch: "})) << "a stop tells its end here too";
    EXPECT_TRUE(CopyIdle);
    EXPECT_TRUE(window.acStartCopy.Enabled());
}

TEST_F(MainWindow, KeysReachEveryActionAndEveryControl) {
    TfmMain& window = Start({}, SW_SHOW);
    SetForegroundWindow(window.Handle());
    SetFocus(window.ListHandle());
    std::vector<HWND> reached;
    for (int step = 0; step < 12; ++step) {
        PostMessageW(GetFocus(), WM_KEYDOWN, VK_TAB, 0);
        LoopUntil([] { return false; }, 0);
        ProcessPendingMessages();
        reached.push_back(GetFocus());
    }
    EXPECT_NE(std::find(reached.begin(), reached.end(), StartButton()), reached.end());
    EXPECT_NE(std::find(reached.begin(), reached.end(), window.CurrentFileField()), reached.end());
    EXPECT_EQ(std::find(reached.begin(), reached.end(), StopButton()), reached.end()) << "it is disabled";

    SetFocus(window.ListHandle());
    PostMessageW(window.ListHandle(), WM_KEYDOWN, VK_F5, 0);
    ProcessPendingMessages();
    EXPECT_FALSE(CopyIdle);
    ASSERT_TRUE(LoopUntil([] { return CopyIdle; }));

    // AltGr+E is a euro sign and no shortcut, and a letter is no way through the list.
    BYTE keys[256]{};
    keys[VK_CONTROL] = keys[VK_MENU] = keys[VK_RMENU] = 0x80;
    SetKeyboardState(keys);
    PostMessageW(window.ListHandle(), WM_KEYDOWN, 'E', 0);
    ProcessPendingMessages();
    EXPECT_EQ(windows_.configurationsShown, 0);
    keys[VK_MENU] = keys[VK_RMENU] = 0;
    SetKeyboardState(keys);
    PostMessageW(window.ListHandle(), WM_KEYDOWN, 'E', 0);
    ProcessPendingMessages();
    EXPECT_EQ(windows_.configurationsShown, 1);
    keys[VK_CONTROL] = 0;
    SetKeyboardState(keys);
    const auto focused = [&] {
        return SendMessageW(window.ListHandle(), LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_FOCUSED);
    };
    SendMessageW(window.ListHandle(), WM_KEYDOWN, VK_END, 0);
    const LRESULT last = focused();
    ASSERT_GT(last, 0);
    SendMessageW(window.ListHandle(), WM_CHAR, 's', 0);
    EXPECT_EQ(focused(), last);

    windows_.userGoesOnEditing = true;
    SendMessageW(window.Handle(), WM_CLOSE, 0, 0);
    EXPECT_TRUE(window.Exists());
    windows_.userGoesOnEditing = false;
    SendMessageW(window.Handle(), WM_CLOSE, 0, 0);
    EXPECT_FALSE(window.Exists());
}

TEST_F(MainWindow, EveryClickCountsAndScreenReadersLearnWhatIsOn) {
    TfmMain& window = Start();
    const HWND button = FindWindowExW(ToolBar(), nullptr, L"BUTTON", MainTexts::ShutDown);
    const auto isChecked = [&] { return SendMessageW(button, BM_GETCHECK, 0, 0) == BST_CHECKED; };
    const LPARAM middle = MAKELPARAM(5, 5);
    for (const UINT down : {WM_LBUTTONDOWN, WM_LBUTTONDBLCLK}) {
        const bool before = isChecked();
        SendMessageW(button, down, MK_LBUTTON, middle);
        SendMessageW(button, WM_LBUTTONUP, 0, middle);
        EXPECT_EQ(isChecked(), !before);
        EXPECT_EQ(window.acShutDown.Checked(), !before);
    }
    const HWND configure = FindWindowExW(ToolBar(), nullptr, L"BUTTON", MainTexts::Configure);
    SendMessageW(configure, WM_LBUTTONDBLCLK, MK_LBUTTON, middle);
    SendMessageW(configure, WM_LBUTTONUP, 0, middle);
    EXPECT_EQ(windows_.configurationsShown, 1);
}

TEST_F(MainWindow, OpensTheNewestRunLogAlsoFromTheContextMenuOfTheList) {
    const std::wstring logs = configuration_ + L"\\Log";
    std::filesystem::remove_all(logs);
    calls_.ShellExecuteW = [](HWND, LPCWSTR, LPCWSTR file, LPCWSTR, LPCWSTR, INT) -> HINSTANCE {
        opened.emplace_back(file);
        SetLastError(ERROR_ACCESS_DENIED);
        return reinterpret_cast<HINSTANCE>(opened.size() == 1 ? INT_PTR{5} : INT_PTR{42});
    };
    opened.clear();
    TfmMain& window = Start({}, SW_SHOW);
    window.acRunLog.Execute();
    EXPECT_EQ(window.Rows().Text(0), kNoRunLogText);

    CreateDirectoryW(logs.c_str(), nullptr);
    for (const wchar_t* name : {L"2026-11-22 20-00-00.txt", L"2026-11-23 20-00-00.txt", L"Notizen.txt"}) {
        std::ofstream(std::filesystem::path(logs + L"\\" + name)) << "x";
    }
    window.acRunLog.Execute();
    EXPECT_EQ(window.Rows().Status(0), kErrorStatus) << window.Rows().Text(0).size();
    EXPECT_NE(window.Rows().Reason(0), L"");
    PostMessageW(window.Handle(), WM_CONTEXTMENU, reinterpret_cast<WPARAM>(window.ListHandle()), -1);
    PostMessageW(window.Handle(), WM_KEYDOWN, VK_UP, 0);
    PostMessageW(window.Handle(), WM_KEYDOWN, VK_RETURN, 0);
    LoopUntil([] { return opened.size() == 2; }, 5);
    EXPECT_EQ(opened, std::vector<std::wstring>(2, logs + L"\\2026-11-23 20-00-00.txt"));
    std::filesystem::remove_all(logs);
}

// The test's system has no high contrast, so it has just been switched off.
TEST_F(MainWindow, TakesOtherColoursWhenTheSystemHasOthers) {
    UseTheme(HighContrastTheme({.window = {1, 1, 1},
                                .windowText = {250, 250, 250},
                                .selection = {0, 250, 0},
                                .selectionText = {2, 2, 2},
                                .disabledText = {0, 120, 120}}));
    TfmMain& window = Start();
    const auto groundOfField = [&window] {
        const TMemoryContext context(nullptr);
        SendMessageW(window.Handle(), WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(context.Get()),
                     reinterpret_cast<LPARAM>(window.CurrentFileField()));
        return GetBkColor(context.Get());
    };
    const auto groundOfList = [&window] {
        return static_cast<COLORREF>(SendMessageW(window.ListHandle(), LVM_GETBKCOLOR, 0, 0));
    };
    EXPECT_EQ(groundOfField(), ToColorRef({1, 1, 1}));
    EXPECT_EQ(groundOfList(), ToColorRef({1, 1, 1}));
    SendMessageW(window.Handle(), WM_SETTINGCHANGE, SPI_SETHIGHCONTRAST, 0);
    EXPECT_EQ(groundOfField(), ToColorRef(TTheme().controlGround));
    EXPECT_EQ(groundOfList(), ToColorRef(TTheme().controlGround));
}

TEST_F(MainWindow, LaysItselfOutForAnotherScale) {
    TfmMain& window = Start();
    const HWND field = window.CurrentFileField();
    RECT before{};
    GetClientRect(field, &before);
    const RECT suggested{10, 20, 1510, 920};
    SendMessageW(window.Handle(), WM_DPICHANGED, MAKEWPARAM(192, 192), reinterpret_cast<LPARAM>(&suggested));
    RECT now{};
    GetWindowRect(window.Handle(), &now);
    EXPECT_TRUE(EqualRect(&now, &suggested));
    GetClientRect(field, &now);
    EXPECT_EQ(now.right, before.right * 2);
    RECT button{};
    GetClientRect(StartButton(), &button);
    EXPECT_EQ(button.right, 80);
}

}  // namespace
