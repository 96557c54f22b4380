#include "ui/taskbar_progress.h"

#include <shobjidl.h>

#include <algorithm>

TTaskbarProgress::~TTaskbarProgress() {
    if (list_ != nullptr) {
        list_->Release();
    }
}

UINT TTaskbarProgress::ButtonCreatedMessage() {
    static const UINT message = RegisterWindowMessageW(L"TaskbarButtonCreated");
    return message;
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
    // A new button shows nothing yet.
    if (shown_) {
        shown_ = false;
        Show(position_, maximum_);
    }
}

void TTaskbarProgress::Show(double position, double maximum) {
    if (shown_ && position == position_ && maximum == maximum_) {
        return;
    }
    shown_ = true;
    position_ = position;
    maximum_ = maximum;
    if (list_ != nullptr) {
        list_->SetProgressValue(window_, static_cast<ULONGLONG>(std::clamp(position, 0.0, maximum)),
                                static_cast<ULONGLONG>(std::max(maximum, 1.0)));
    }
}

void TTaskbarProgress::Hide() {
    if (shown_ && list_ != nullptr) {
        list_->SetProgressState(window_, TBPF_NOPROGRESS);
    }
    shown_ = false;
}
