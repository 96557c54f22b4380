// How the progress of one large file reaches the window.
#pragma once

#include <windows.h>

// Given to CopyFileExW; `data` is the window that receives the three progress messages (message_kind.h). They
// are sent, not posted: the window may process its messages before the copy goes on, and a stop asked for
// there ends the copy at the next call.
DWORD CALLBACK CopyProgressRoutine(LARGE_INTEGER totalSize, LARGE_INTEGER transferred,
                                   LARGE_INTEGER streamSize, LARGE_INTEGER streamTransferred,
                                   DWORD streamNumber, DWORD reason, HANDLE sourceFile,
                                   HANDLE destinationFile, void* data);
