// A data module with a source and a destination folder of its own, and the reports of its runs.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "engine/tdm.h"
#include "support/text.h"
#include "test_folder.h"
#include "ui/window.h"

struct TReport {
    std::wstring text;
    TMessagePos kind;
    std::wstring reason;
};

// A clock that a wait moves on at once, and what happens when it does.
inline std::atomic<ULONGLONG> clockNow;
inline std::function<void()> onSleep;

inline void UseMovedClock(TPlatformCalls& calls) {
    calls.Sleep = [](DWORD milliseconds) WINAPI {
        clockNow += milliseconds;
        if (onSleep) {
            onSleep();
        }
        Sleep(0);
    };
    calls.GetTickCount64 = []() WINAPI -> ULONGLONG { return clockNow; };
}

class CopyRun : public testing::Test {
protected:
    CopyRun() {
        configuration_ = ConfigurationFolder(SystemPlatformCalls());
        DeleteFileW((configuration_ + L"\\NASConf.Dat").c_str());
        DeleteFileW((configuration_ + L"\\NASSeen.ini").c_str());
        WriteSettings("NASDIR=" + ToUtf8(destination_.Path()) + "\\\r\n");
    }

    void WriteSettings(const std::string& lines) const {
        std::ofstream file(std::filesystem::path(configuration_ + L"\\NASConf.ini"), std::ios::binary);
        file << "[CONFIG]\r\n" << lines;
    }

    TDM& Dm() {
        if (!dm_) {
            dm_ = std::make_unique<TDM>(calls_);
            dm_->DataModuleCreate();
            dm_->SetMessage = [this](TDM&, const std::wstring& text, TMessagePos kind,
                                     const std::wstring& reason) {
                reports_.push_back({text, kind, reason});
                if (onReport_) {
                    onReport_(reports_.back());
                }
            };
            dm_->DoNasFinishMsg = [this](TDM&) { finished_ = true; };
        }
        return *dm_;
    }

    void AddSource(const std::wstring& folder, bool recursive = true) {
        Dm().MemData.Append();
        SourceFolderRow& row = Dm().MemData.Working();
        row.Aktive = true;
        row.Directory = folder;
        row.Rekursiv = recursive;
        row.ExtensionMode = L"NO";
        Dm().MemData.Post();
    }

    // A run to its end as the window would see it, the table saved; fails after some seconds.
    void Run(const TRunOrder& order = {}) {
        reports_.clear();
        finished_ = false;
        Dm().StartCopy(order);
        for (int step = 0; step < 5000 && !CopyIdle && Dm().State() != TRunState::Unreachable; ++step) {
            Sleep(1);
            ProcessPendingMessages();
            Dm().CopyTimerTimer();
        }
        EXPECT_TRUE(CopyIdle || Dm().State() == TRunState::Unreachable) << "the run did not end";
        if (onEnd_) {
            onEnd_();
        }
        EndRun();
    }

    // What the window does at the end of a run, and when the user stops it.
    void EndRun() {
        Dm().StopCopy();
        Dm().EndScanTask();
        Dm().SaveNasData();
        Dm().CloseRun();
    }

    std::vector<std::wstring> Texts(TMessagePos kind) const {
        std::vector<std::wstring> texts;
        for (const TReport& report : reports_) {
            if (report.kind == kind) {
                texts.push_back(report.text);
            }
        }
        return texts;
    }

    std::wstring HostFolder() const { return destination_.Path() + L"\\" + HostName(); }
    // The copy of a file below the source folder, relative to the destination.
    std::wstring CopyOf(std::wstring_view relative) const {
        return HostName() + L"\\drive_" + source_.Path().substr(0, 1) + source_.Path().substr(2) + L"\\" +
               std::wstring(relative);
    }

    TTestFolder source_;
    TTestFolder destination_;
    TPlatformCalls calls_ = SystemPlatformCalls();
    std::wstring configuration_;
    std::vector<TReport> reports_;
    std::function<void(const TReport&)> onReport_;
    std::function<void()> onEnd_;
    bool finished_ = false;
    std::unique_ptr<TDM> dm_;
};
