// What the window costs a run: the copy of many small files with the window on the screen, against the same
// copy with callbacks that do nothing.
//
//   cmake --preset windows-x64 -DVARDEKO_BENCH=ON && cmake --build --preset windows-x64
//   scripts/in_wine.sh wine build/windows-x64/bin/reporting_bench.exe [FILES [ROUNDS]]
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "app/main_window.h"
#include "support/system_helpers.h"
#include "support/text.h"
#include "test_folder.h"

namespace {

constexpr int kFilesPerFolder = 100;

double SecondsSince(std::chrono::steady_clock::time_point begin) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

class TNoWindows final : public TCompanionWindows {
public:
    void ShowConfiguration(HWND) override {}
    bool CloseConfiguration() override { return true; }
    void CheckForUpdate(bool, std::function<void()>) override {}
    bool NewUpdateExists() const override { return false; }
    void CloseAllNow() override {}
};

struct TResult {
    double seconds = 0;    // the whole run, without the waits of the copy timer
    double inReports = 0;  // of these, inside of the window's callback: recording, input, painting
};

// One run into a fresh destination.
class TMeasuredRun {
public:
    explicit TMeasuredRun(const TTestFolder& source) {
        std::ofstream settings(
            std::filesystem::path(ConfigurationFolder(SystemPlatformCalls()) + L"\\NASConf.ini"),
            std::ios::binary);
        settings << "[CONFIG]\r\nNASDIR=" << ToUtf8(destination_.Path()) << "\r\n";
        settings.close();
        dataModule_.DataModuleCreate();
        dataModule_.MemData.Assign({});
        dataModule_.MemData.Append();
        SourceFolderRow& row = dataModule_.MemData.Working();
        row.Aktive = row.Rekursiv = true;
        row.Directory = source.Path();
        row.ExtensionMode = L"NO";
        dataModule_.MemData.Post();
    }

    TResult WithoutWindow() {
        dataModule_.SetMessage = [](TDM&, const std::wstring&, TMessagePos) {};
        dataModule_.DoNasFinishMsg = [](TDM&) { CopyIdle = true; };
        return Measure([this] {
            CopyIdle = false;
            dataModule_.StartCopy();
        });
    }

    TResult WithWindow() {
        TNoWindows windows;
        TfmMain window(SystemPlatformCalls(), {});
        window.FormCreate();
        window.Show(dataModule_, windows);
        ProcessPendingMessages();
        double inReports = 0;
        dataModule_.SetMessage = [&inReports, &window](TDM&, const std::wstring& text, TMessagePos kind) {
            const auto begin = std::chrono::steady_clock::now();
            window.SetMessage(text, kind);
            inReports += SecondsSince(begin);
        };
        TResult result = Measure([&window] { window.acStartCopy.Execute(); });
        result.inReports = inReports;
        return result;
    }

private:
    TResult Measure(const std::function<void()>& start) {
        const auto begin = std::chrono::steady_clock::now();
        start();
        while (!CopyIdle) {
            ProcessPendingMessages();
            dataModule_.CopyTimerTimer();
        }
        return {.seconds = SecondsSince(begin)};
    }

    TTestFolder destination_;
    TDM dataModule_{SystemPlatformCalls()};
};

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

}  // namespace

extern "C" int wmain(int count, wchar_t** arguments) {
    const int files = count > 1 ? _wtoi(arguments[1]) : 20000;
    const int rounds = count > 2 ? _wtoi(arguments[2]) : 3;
    const TTestFolder source;
    const std::string content(2048, 'x');
    for (int file = 0; file < files; ++file) {
        source.Write(L"folder " + std::to_wstring(file / kFilesPerFolder) + L"\\file " +
                         std::to_wstring(file) + L".txt",
                     content);
    }
    std::vector<double> without;
    std::vector<double> with;
    std::vector<double> shares;
    for (int round = 0; round < rounds; ++round) {
        without.push_back(TMeasuredRun(source).WithoutWindow().seconds);
        const TResult result = TMeasuredRun(source).WithWindow();
        with.push_back(result.seconds);
        shares.push_back(result.inReports / result.seconds * 100);
        std::printf("round %d: %.2f s without window, %.2f s with it, %.1f %% of that in reports\n",
                    round + 1, without.back(), with.back(), shares.back());
        std::fflush(stdout);
    }
    std::printf("%d files, medians: %.2f s without window, %.2f s with it, %.1f %% of that in reports\n",
                files, Median(without), Median(with), Median(shares));
    return 0;
}
