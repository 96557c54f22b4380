// Problems in German.
#pragma once

#include <exception>
#include <string>

#include "support/problem.h"

// The system's own text for an error code (SystemErrorText in the program).
using TSystemText = std::wstring (*)(TErrorCode code);

// The sentence for the user. Those that begin with "Error:" are older than the rest of this program, and
// known.
std::wstring ProblemText(const TProblem& problem, TSystemText systemText);

// What stands behind a sentence that does not say why: the system's reason, or what helps; empty when there
// is nothing to add.
std::wstring ProblemReason(const TProblem& problem, TSystemText systemText);

// The problem that an exception carries; one that carries none is told in its own words.
TProblem ProblemOf(const std::exception& error);
