// Problems as tests see them.
#pragma once

#include <functional>
#include <ostream>

#include "support/problem.h"
#include "support/text.h"

// The problem that the work throws; one that no code makes when it throws none.
inline TProblem ProblemIn(const std::function<void()>& work) {
    try {
        work();
    } catch (const EProblem& error) {
        return error.Problem();
    }
    return {.detail = L"(no problem)"};
}

// What googletest shows of one.
inline void PrintTo(const TProblem& problem, std::ostream* out) {
    *out << "kind " << static_cast<int>(problem.what) << ", path \"" << ToUtf8(problem.path) << "\", code "
         << problem.code << ", number " << problem.number << ", limit " << problem.limit << ", detail \""
         << ToUtf8(problem.detail) << '"';
}
