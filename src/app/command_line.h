// The switches of the command line.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "engine/run_order.h"

// What the command line asks for. Without "/COPY" the switches "/MSGOFF" and "/SHUTDOWN" mean nothing,
// without "/VERIFY" "/REPAIR" does not.
struct TCommandLine {
    bool copy = false;      // "/COPY": start a run at once, and close at its end
    bool msgOff = false;    // "/MSGOFF"
    bool shutDown = false;  // "/SHUTDOWN": shut the computer down at the run's end
    // "/VERIFY", "/VERIFY=1" to "/VERIFY=99", "/REPAIR": check the backup, after copying if that is asked
    // for, and close at its end.
    std::optional<TCheckOrder> check = std::nullopt;

    // A run begins at once, and nobody is there.
    bool IsUnattended() const { return copy || check; }
};

// Reads the arguments behind the program's own path. A switch is an argument that equals it as a whole, the
// letters a to z counting as A to Z; other arguments are ignored.
TCommandLine ParseCommandLine(const std::vector<std::wstring>& arguments);
