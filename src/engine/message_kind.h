// What the engine reports.
#pragma once

// The kind of an engine report.
enum class TMessagePos {
    Memo = 0,       // a row: a copied file, or why a run was not started
    Status = 1,     // the path being worked on
    Bytes = 2,      // the bytes copied so far, as a size text
    Error = 3,      // a row: a file that could not be copied, or something else that failed
    MD5 = 4,        // never sent
    FileMsg = 5,    // the name of the file that is done
    Ignore = 6,     // a row: what was left alone
    ThreadMsg = 7,  // a number from the scan task
};

// The progress of a large file, sent to TDM::myHandle. The value is 64 bits wide: the long parameter is its
// high half, the word parameter its low half.
inline constexpr unsigned kProgressResetMessage = 1025;     // WM_USER + 1: back to 0
inline constexpr unsigned kProgressPositionMessage = 1026;  // WM_USER + 2: bytes copied of this file
inline constexpr unsigned kProgressMaximumMessage = 1027;   // WM_USER + 3: size of this file
