#include "update/transfer_thread.h"

#include <utility>

namespace {

constexpr DWORD kRetryInterval = 50;  // milliseconds

}  // namespace

TTransferThread::TTransferThread(std::function<void()> woken) : wakeUp_(std::move(woken)) {}

TTransferThread::~TTransferThread() {
    Stop();
}

void TTransferThread::Start(std::function<void()> work) {
    Stop();
    ResetEvent(cancelled_.Get());
    thread_ = std::thread(std::move(work));
}

void TTransferThread::Stop() {
    Cancel();
    if (thread_.joinable()) {
        thread_.join();
    }
}

void TTransferThread::Notify() {
    while (!wakeUp_.Post() && WaitForSingleObject(cancelled_.Get(), kRetryInterval) == WAIT_TIMEOUT) {
    }
}
