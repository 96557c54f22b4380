// The program's window.
#pragma once

#include <windows.h>

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "app/command_line.h"
#include "app/end_request.h"
#include "app/status_list_model.h"
#include "app/status_list_view.h"
#include "engine/tdm.h"
#include "support/handles.h"
#include "support/platform_calls.h"
#include "ui/action.h"
#include "ui/message_loop.h"
#include "ui/progress_bar.h"
#include "ui/report_throttle.h"
#include "ui/status_bar.h"
#include "ui/taskbar_progress.h"
#include "ui/timer.h"
#include "ui/tool_bar.h"
#include "ui/window.h"

// The windows that the main window opens. None of these calls waits for the user, except for a question that
// CloseConfiguration may ask.
class TCompanionWindows {
public:
    virtual ~TCompanionWindows() = default;

    virtual void ShowConfiguration(HWND owner) = 0;
    // Closes the configuration window as its user would. False when the user wants to go on editing.
    virtual bool CloseConfiguration() = 0;
    // The same before a run: asks nothing. False when what was entered could not be saved; the window stays
    // open then and says so.
    virtual bool CloseConfigurationForRun() = 0;
    // Looks for a newer version: silently, or in a window. `finished` is called when the search has ended or
    // the window was closed.
    virtual void CheckForUpdate(bool silent, std::function<void()> finished) = 0;
    virtual bool NewUpdateExists() const = 0;
    // Puts all of them away without a question.
    virtual void CloseAllNow() = 0;
};

// The main window: starts and stops runs, and shows what the engine reports.
class TfmMain final : public TWindow {
public:
    TfmMain(const TPlatformCalls& calls, TCommandLine commandLine);
    ~TfmMain() override;

    // Creates the window, hidden. It knows no data module yet. Throws std::system_error when the system
    // refuses.
    void FormCreate();
    // Shows the window and takes up work: from here on the data module reports to it.
    void Show(TDM& dataModule, TCompanionWindows& companions, int showCommand = SW_SHOWNORMAL);

    // What the message loop calls when nothing waits.
    void ApplicationIdle();
    // Saves and closes the tables, once.
    void EndDataModule();
    // What came of the last run; of a program that was started for a run, also that there was none.
    int ExitCode() const;

    // Puts a row on top of the list; `reason` says why something went wrong, beside the text.
    void AddStatusLine(const std::wstring& text, std::optional<int> status = kInfoStatus,
                       const std::wstring& reason = {});
    // The engine's callbacks.
    void SetMessage(const std::wstring& text, TMessagePos kind, const std::wstring& reason = {});
    void DoNasFinishMsg();
    // A mistake that no handler expected: shown as an error, and a run is not a success with it.
    void ReportUnexpectedError(const std::wstring& text);

    TAction acClose;
    TAction acStartCopy;
    TAction acStopCopy;
    TAction acConfigCopy;
    TAction acShutDown;
    TAction acReindex;
    TAction acUpdate;
    TAction acVerify;
    TAction acRunLog;
    TAction acNextError;
    TAction acPreviousError;
    TAction acShowFile;
    TAction acShowCopy;
    TAction acPauseCopy;
    TAction acMinWin;
    TAction acAbout;

    const TStatusListModel& Rows() const { return rows_; }
    const TStatusBar& StatusBar() const { return sbarMain; }
    const TProgressBar& ProgressBar() const { return cxProgressBar; }
    const TTaskbarProgress& TaskbarProgress() const { return taskbarProgress_; }
    HWND ListHandle() const { return cxGridTv.Handle(); }
    HWND CurrentFileField() const { return dxBarStatic2_; }

protected:
    std::optional<LRESULT> HandleMessage(UINT message, WPARAM wordParameter, LPARAM longParameter) override;

private:
    // Posted by a mistake to this window itself.
    static constexpr UINT kRunBrokenMessage = WM_APP + 2;

    // Where the engine is called further up the stack, reports do not process messages: a click answered
    // there would start or stop a run in the middle of starting or stopping one.
    class TEngineCall {
    public:
        explicit TEngineCall(TfmMain& window) : window_(window) { ++window_.engineCalls_; }
        TEngineCall(const TEngineCall&) = delete;
        TEngineCall& operator=(const TEngineCall&) = delete;
        ~TEngineCall() { --window_.engineCalls_; }

    private:
        TfmMain& window_;
    };

    // Handlers of the actions and timers.
    void acCloseExecute();
    void acStartCopyExecute();
    void acStopCopyExecute();
    void acConfigCopyExecute();
    void acShutDownExecute();
    void acReindexExecute();
    void acUpdateExecute();
    void acVerifyExecute();
    void acRunLogExecute();
    void SelectError(bool below);
    // The path in the current row; empty when that row is about something else.
    std::wstring CurrentPath() const;
    void ShowInFolder(const std::wstring& path);
    bool OpenByShell(const wchar_t* file, const wchar_t* parameters);
    void StartRun(const TRunOrder& order);
    void TimerTimer();
    void UpdateTimerTimer();

    // Handlers of window messages.
    void Activated(bool active);
    void ScaleChanged(TScale scale, const RECT& suggestedArea);
    // Whether the session may end now; `critical`: it will, whatever is answered.
    bool MayEndSession(bool critical) const;
    void SessionEnds();
    void RunBroken();
    void Paint();
    bool TranslateKey(const MSG& message);
    void ProgressMessage(UINT message, WPARAM wordParameter, LPARAM longParameter);

    void CreateControls();
    void FormShow();
    void UseScale(TScale scale);
    void Layout();

    void EndOfRun();
    void AddFailureLines(const TRunFailures& failures, bool onlyChecks);
    // Tells somebody who looks at another window that the run is over.
    void DrawAttention();
    std::array<TAction*, 13> Actions();
    // Stops a run, and closes the window once the engine is off the stack.
    void RequestClose();
    TEndAnswer EndRequested();
    bool EngineIsOnStack() const;
    void CloseWhenPossible();
    // While work is under way the computer does not fall asleep, and says why it should not be switched off.
    void KeepAwake();
    void EndForgottenMenu();
    void UpdateActions();
    void ShowWaitCursor(bool wait);

    // A report was recorded: looks for input and paints, when it is time to.
    void AfterReport();
    void PaintNow();
    // Brings what was recorded to the controls.
    void ShowChanges();
    void SetCurrentFile(const std::wstring& text);

    const TPlatformCalls& calls_;
    const TCommandLine commandLine_;
    TDM* dataModule_ = nullptr;
    bool dataModuleEnded_ = false;
    bool shown_ = false;
    bool maximized_ = false;  // when it was last closed
    TCompanionWindows* companions_ = nullptr;

    bool aShowMessage = true;
    bool CloseAfterCopy = false;
    DWORD startTime = 0;
    bool unexpectedErrors_ = false;
    bool failureUnseen_ = false;  // a run failed in something, and the window was not looked at since
    bool keepsAwake_ = false;
    ULONGLONG shutdownUntil_ = 0;  // milliseconds: till then the session's end is what this program asked for
    bool closing_ = false;
    int engineCalls_ = 0;

    TScale scale_;
    TFont font_;
    TStatusListModel rows_;

    TToolBar toolBar_;
    HWND fileLabel_ = nullptr;
    HWND dxBarStatic2_ = nullptr;  // the current-file field
    std::wstring currentFile_;
    bool currentFileChanged_ = false;
    TStatusListView cxGridTv{rows_};
    TStatusBar sbarMain;
    TProgressBar cxProgressBar;
    TTaskbarProgress taskbarProgress_;
    HWND lastFocus_ = nullptr;
    bool waitCursor_ = false;

    TReportThrottle throttle_;
    TTimer Timer;
    TTimer UpdateTimer;
    TTimer showTimer_;   // shows what was recorded, while another loop than the program's own runs
    TTimer closeTimer_;  // closes the window once the engine is off the stack
    TTimer menuTimer_;   // looks for a menu that nobody uses, while a run is on
    TMessageFilter keyFilter_;
};
