// How the progress of one large file reaches the window.
#pragma once

#include <windows.h>

#include "engine/ask_across.h"

// What a copy says of its progress, and asks whether it is to go on (PROGRESS_CONTINUE, PROGRESS_STOP).
struct TProgressCall {
    LARGE_INTEGER totalSize;    // bytes
    LARGE_INTEGER transferred;  // bytes
    DWORD reason;
};
using TProgressQuestion = TAskAcross<TProgressCall, DWORD>;

// Given to CopyFileExW, which calls it on a thread of its own; `data` is the TProgressQuestion through which
// the window's thread is asked. The copy goes on when it has answered.
DWORD CALLBACK AskForProgress(LARGE_INTEGER totalSize, LARGE_INTEGER transferred, LARGE_INTEGER streamSize,
                              LARGE_INTEGER streamTransferred, DWORD streamNumber, DWORD reason,
                              HANDLE sourceFile, HANDLE destinationFile, void* data);

// The answer of the window's thread. `data` is the window that receives the three progress messages
// (message_kind.h). They are sent, not posted: the window may process its messages before the copy goes on,
// and a stop asked for there ends the copy at the next call.
DWORD CALLBACK CopyProgressRoutine(LARGE_INTEGER totalSize, LARGE_INTEGER transferred,
                                   LARGE_INTEGER streamSize, LARGE_INTEGER streamTransferred,
                                   DWORD streamNumber, DWORD reason, HANDLE sourceFile,
                                   HANDLE destinationFile, void* data);
