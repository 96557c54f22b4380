// The switches of the command line.
#pragma once

#include <string>
#include <vector>

// What the command line asks for. Without "/COPY" the other switches mean nothing.
struct TCommandLine {
    bool copy = false;      // "/COPY": start a run at once, and close at its end
    bool msgOff = false;    // "/MSGOFF"
    bool shutDown = false;  // "/SHUTDOWN": shut the computer down at the run's end
};

// Reads the arguments behind the program's own path. A switch is an argument that equals it as a whole, the
// letters a to z counting as A to Z; other arguments are ignored.
TCommandLine ParseCommandLine(const std::vector<std::wstring>& arguments);
