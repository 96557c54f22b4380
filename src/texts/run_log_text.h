// The lines of a run log. Each is one line of German without a line break, if nothing else is said.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

#include "support/date_time.h"
#include "support/problem.h"
#include "texts/problem_text.h"

// What came of a run.
struct TRunSummary {
    std::uint64_t copiedFiles = 0;
    std::uint64_t copiedBytes = 0;
    std::uint64_t failedFiles = 0;
    std::chrono::milliseconds duration{};
    int exitCode = 0;  // as the program would end with it: 0, 1, 3 or 4
    bool onlyChecked = false;
};

// "Vardeko 7.8: Lauf vom 23.11.2026 20:00:00"
std::wstring RunLogTitle(TDateTime start);
// `folder` is this computer's folder in the destination.
std::wstring RunLogDestination(std::wstring_view folder);
std::wstring RunLogSourceFolder(std::wstring_view folder, std::uint64_t filesCompared);
// What went wrong, with its reason and the system's code if it has one.
std::wstring RunLogProblem(const TProblem& problem, TSystemText systemText);
// Several lines, with CR LF between them.
std::wstring RunLogEnd(const TRunSummary& summary, TDateTime end);

// "20:00:05"
std::wstring ClockText(TDateTime time);

// What the window says of run logs.
inline constexpr wchar_t kNoRunLogText[] = L"Es gibt noch kein Laufprotokoll.";
std::wstring RunLogNotOpenedText(std::wstring_view path);
