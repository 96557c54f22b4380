#include "engine/copy_progress.h"

#include "engine/message_kind.h"
#include "engine/run_state.h"

namespace {

void SendValue(void* window, UINT message, LARGE_INTEGER value) {
    SendMessageW(static_cast<HWND>(window), message, value.LowPart, value.HighPart);
}

}  // namespace

DWORD CALLBACK AskForProgress(LARGE_INTEGER totalSize, LARGE_INTEGER transferred, LARGE_INTEGER,
                              LARGE_INTEGER, DWORD, DWORD reason, HANDLE, HANDLE, void* data) {
    return static_cast<TProgressQuestion*>(data)->Ask(
        {.totalSize = totalSize, .transferred = transferred, .reason = reason});
}

DWORD CALLBACK CopyProgressRoutine(LARGE_INTEGER totalSize, LARGE_INTEGER transferred, LARGE_INTEGER,
                                   LARGE_INTEGER, DWORD, DWORD reason, HANDLE, HANDLE, void* data) {
    if (CopyIdle) {
        SendValue(data, kProgressResetMessage, {});
        return PROGRESS_STOP;
    }
    if (reason == CALLBACK_CHUNK_FINISHED) {
        SendValue(data, kProgressPositionMessage, transferred);
    } else if (reason == CALLBACK_STREAM_SWITCH) {
        SendValue(data, kProgressMaximumMessage, totalSize);
    }
    return PROGRESS_CONTINUE;
}
