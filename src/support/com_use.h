// COM for a thread.
#pragma once

#include <windows.h>

#include <objbase.h>

// Starts COM for the thread as long as the object lives, also where it was started before.
class TComUse {
public:
    TComUse() : result_(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE)) {}
    TComUse(const TComUse&) = delete;
    TComUse& operator=(const TComUse&) = delete;
    ~TComUse() {
        if (SUCCEEDED(result_)) {
            CoUninitialize();
        }
    }

private:
    HRESULT result_;
};
