// How the setup asks a running program to make room for another version, without ever stopping a run.
#pragma once

#include <windows.h>

// Sent to the main window; the answer is a TEndAnswer. setup/running.nsh knows the name and the values.
// Versions without it answer 0.
UINT EndRequestMessage();

enum class TEndAnswer : LRESULT {
    Ending = 1,  // the program closes, unless its user wants to go on editing
    Busy = 2,    // a run or a reindex is on, or a run is about to begin
};
