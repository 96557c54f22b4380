#include "texts/run_log_text.h"

#include <gtest/gtest.h>

namespace {

std::wstring SystemText(TErrorCode) {
    return L"Zugriff verweigert";
}

std::wstring Line(const TProblem& problem) {
    return RunLogProblem(problem, &SystemText);
}

TEST(RunLogText, TellsWhatFailedWithReasonAndCode) {
    EXPECT_EQ(Line({.what = TProblemKind::CopyFailed, .path = L"C:\\a.txt", .code = 5}),
              L"Nicht kopiert: C:\\a.txt: Zugriff verweigert [Code 5]");
    EXPECT_EQ(Line({.what = TProblemKind::FolderIncomplete, .path = L"C:\\b", .code = 5}),
              L"Der Ordner konnte nicht vollständig gelesen werden: C:\\b (Zugriff verweigert) [Code 5]");
    EXPECT_EQ(Line({.what = TProblemKind::DestinationMissing, .path = L"N:\\B", .code = 5}),
              L"Error: Destination Directory does not exist, N:\\B (Zugriff verweigert) [Code 5]");
    EXPECT_NE(Line({.what = TProblemKind::ShareRefused, .path = L"\\\\nas\\b", .code = 1219})
                  .find(L"net use \\\\nas\\b /delete"),
              std::wstring::npos);
    EXPECT_EQ(Line({.what = TProblemKind::SourceFolderMissing, .path = L"E:\\Fotos"}),
              L"Der Quellordner ist nicht vorhanden: E:\\Fotos");
}

TEST(RunLogText, SumsUpARun) {
    const TDateTime start = ToDateTime({2026, 11, 3, 20, 0, 5});
    EXPECT_EQ(RunLogTitle(start).substr(RunLogTitle(start).find(L':')), L": Lauf vom 03.11.2026 20:00:05");
    EXPECT_EQ(RunLogSourceFolder(L"C:\\a", 1), L"Quellordner: C:\\a (1 Datei verglichen)");
    EXPECT_EQ(
        RunLogEnd({.copiedFiles = 1'234'567,
                   .copiedBytes = 100,
                   .failedFiles = 1000,
                   .duration = std::chrono::milliseconds(90'061'999),
                   .exitCode = 1},
                  start),
        L"Kopiert: 1.234.567 Dateien, 100 Bytes\r\nNicht kopiert: 1.000 Dateien\r\n"
        L"Dauer: 25 h 01 min 01 s\r\nEnde: 03.11.2026 20:00:05\r\nErgebnis: 1. Nicht alles ist kopiert.");
}

}  // namespace
