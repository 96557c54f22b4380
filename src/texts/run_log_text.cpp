#include "texts/run_log_text.h"

#include "support/version.h"

namespace {

std::wstring TwoDigits(std::int64_t number) {
    return (number < 10 ? L"0" : L"") + std::to_wstring(number);
}

std::wstring DateText(TDateTime time) {
    const TCalendarTime parts = ToCalendarTime(time);
    return TwoDigits(parts.day) + L"." + TwoDigits(parts.month) + L"." + std::to_wstring(parts.year);
}

// "1.234.567"
std::wstring Grouped(std::uint64_t number) {
    std::wstring digits = std::to_wstring(number);
    for (std::size_t place = digits.size(); place > 3;) {
        place -= 3;
        digits.insert(place, 1, L'.');
    }
    return digits;
}

std::wstring Count(std::uint64_t number, const wchar_t* one, const wchar_t* many) {
    return Grouped(number) + L" " + (number == 1 ? one : many);
}

std::wstring Files(std::uint64_t number) {
    return Count(number, L"Datei", L"Dateien");
}

std::wstring DurationText(std::chrono::milliseconds duration) {
    const std::int64_t seconds = std::chrono::floor<std::chrono::seconds>(duration).count();
    return std::to_wstring(seconds / 3600) + L" h " + TwoDigits(seconds / 60 % 60) + L" min " +
           TwoDigits(seconds % 60) + L" s";
}

const wchar_t* ResultText(int exitCode, bool onlyChecked) {
    switch (exitCode) {
        case 0:
            return onlyChecked ? L"Alle Kopien, die geprüft wurden, sind gut."
                               : L"Alles, was zu kopieren war, ist kopiert.";
        case 3:
            return onlyChecked ? L"Was gefunden wurde, ist geprüft, aber ein Quellordner fehlt."
                               : L"Was gefunden wurde, ist kopiert, aber ein Quellordner fehlt.";
        case 4:
            return L"Die Prüfung fand schlechte Kopien.";
        default:
            return onlyChecked ? L"Nicht alles ist geprüft." : L"Nicht alles ist kopiert.";
    }
}

}  // namespace

std::wstring RunLogTitle(TDateTime start) {
    return L"Vardeko " + std::wstring(ProgramVersionText()) + L": Lauf vom " + DateText(start) + L" " +
           ClockText(start);
}

std::wstring RunLogDestination(std::wstring_view folder) {
    return L"Ziel: " + std::wstring(folder);
}

std::wstring RunLogSourceFolder(std::wstring_view folder, std::uint64_t filesCompared) {
    return L"Quellordner: " + std::wstring(folder) + L" (" + Files(filesCompared) + L" verglichen)";
}

std::wstring RunLogProblem(const TProblem& problem, TSystemText systemText) {
    std::wstring line = ProblemText(problem, systemText);
    if (problem.what == TProblemKind::CopyFailed) {
        line = L"Nicht kopiert: " + problem.path + L": " + line;
    } else if (IsBadCopy(problem.what)) {
        line = L"Schlechte Kopie: " + problem.path + L": " + line;
    }
    // A row has it beside its text, where the text does not say it itself.
    const std::wstring reason = ProblemReason(problem, systemText);
    if (line.find(reason) == std::wstring::npos) {
        line += L" (" + reason + L")";
    }
    if (problem.code != 0) {
        line += L" [Code " + std::to_wstring(problem.code) + L"]";
    }
    return line;
}

std::wstring RunLogEnd(const TRunSummary& summary, TDateTime end) {
    return L"Kopiert: " + Files(summary.copiedFiles) + L", " + Count(summary.copiedBytes, L"Byte", L"Bytes") +
           L"\r\nNicht kopiert: " + Files(summary.failedFiles) + L"\r\nDauer: " +
           DurationText(summary.duration) + L"\r\nEnde: " + DateText(end) + L" " + ClockText(end) +
           L"\r\nErgebnis: " + std::to_wstring(summary.exitCode) + L". " +
           ResultText(summary.exitCode, summary.onlyChecked);
}

std::wstring ClockText(TDateTime time) {
    const TCalendarTime parts = ToCalendarTime(time);
    return TwoDigits(parts.hour) + L":" + TwoDigits(parts.minute) + L":" + TwoDigits(parts.second);
}

std::wstring RunLogNotOpenedText(std::wstring_view path) {
    return L"Das Laufprotokoll kann nicht geöffnet werden: " + std::wstring(path);
}
