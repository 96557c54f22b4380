#include "ui/taskbar_progress.h"

#include <shobjidl.h>

#include <algorithm>
#include <utility>

TTaskbarProgress::~TTaskbarProgress() {
    if (list_ != nullptr) {
        list_->Release();
    }
}

UINT TTaskbarProgress::ButtonCreatedMessage() {
    static const UINT message = RegisterWindowMessageW(L"TaskbarButtonCreated");
    return message;
}

void TTaskbarProgress::LetButtonMessagePass(HWND window) {
    ChangeWindowMessageFilterEx(window, ButtonCreatedMessage(), MSGFLT_ALLOW, nullptr);
}

void TTaskbarProgress::Attach(HWND window) {
    window_ = window;
    if (list_ == nullptr && FAILED(CoCreateInstance(CLSID_TaskbarList, nullptr, CLSCTX_INPROC_SERVER,
                                                    IID_ITaskbarList3, reinterpret_cast<void**>(&list_)))) {
        list_ = nullptr;
    }
    if (list_ != nullptr && FAILED(list_->HrInit())) {
        list_->Release();
        list_ = nullptr;
    }
    Send();  // a new button shows nothing yet
}

// Whether that is another state.
bool TTaskbarProgress::Enter(TState state) {
    return std::exchange(state_, state) != state;
}

void TTaskbarProgress::Send() const {
    if (list_ == nullptr) {
        return;
    }
    switch (state_) {
        case TState::Hidden:
            list_->SetProgressState(window_, TBPF_NOPROGRESS);
            break;
        case TState::Pulse:
            list_->SetProgressState(window_, TBPF_INDETERMINATE);
            break;
        case TState::Error:
            list_->SetProgressState(window_, TBPF_ERROR);
            list_->SetProgressValue(window_, 1, 1);
            break;
        case TState::Value:
            list_->SetProgressState(window_, TBPF_NORMAL);
            list_->SetProgressValue(window_, static_cast<ULONGLONG>(std::clamp(position_, 0.0, maximum_)),
                                    static_cast<ULONGLONG>(std::max(maximum_, 1.0)));
            break;
    }
}

void TTaskbarProgress::Show(double position, double maximum) {
    const bool moved = std::exchange(position_, position) != position;
    const bool grew = std::exchange(maximum_, maximum) != maximum;
    if (Enter(TState::Value) || moved || grew) {
        Send();
    }
}

void TTaskbarProgress::ShowPulse() {
    if (Enter(TState::Pulse)) {
        Send();
    }
}

void TTaskbarProgress::ShowError() {
    if (Enter(TState::Error)) {
        Send();
    }
}

void TTaskbarProgress::Hide() {
    if (Enter(TState::Hidden)) {
        Send();
    }
}
