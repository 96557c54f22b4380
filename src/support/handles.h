// Owners of the system's handles, each of which knows its own invalid value.
#pragma once

#include <windows.h>

#include <utility>

// Owns one handle and releases it once. The traits name the handle's type, its invalid value and how it is
// released.
template <typename Traits>
class TUniqueHandle {
public:
    using Handle = typename Traits::Handle;

    TUniqueHandle() = default;
    explicit TUniqueHandle(Handle handle) : handle_(handle) {}
    TUniqueHandle(TUniqueHandle&& other) noexcept : handle_(other.Release()) {}
    TUniqueHandle& operator=(TUniqueHandle&& other) noexcept {
        Reset(other.Release());
        return *this;
    }
    TUniqueHandle(const TUniqueHandle&) = delete;
    TUniqueHandle& operator=(const TUniqueHandle&) = delete;
    ~TUniqueHandle() { Reset(); }

    Handle Get() const { return handle_; }
    bool IsValid() const { return handle_ != Traits::Invalid(); }
    explicit operator bool() const { return IsValid(); }
    Handle Release() { return std::exchange(handle_, Traits::Invalid()); }
    void Reset(Handle handle = Traits::Invalid()) {
        if (const Handle old = std::exchange(handle_, handle); old != Traits::Invalid()) {
            Traits::Close(old);
        }
    }
    // For functions that hand out a handle through a pointer; what was owned is released first.
    Handle* Receive() {
        Reset();
        return &handle_;
    }

private:
    Handle handle_ = Traits::Invalid();
};

struct TRegistryKeyTraits {
    using Handle = HKEY;
    static Handle Invalid() { return nullptr; }
    static void Close(Handle key) { RegCloseKey(key); }
};
using TRegistryKey = TUniqueHandle<TRegistryKeyTraits>;

// A kernel object whose invalid value is null (token, process, thread, event).
struct TKernelHandleTraits {
    using Handle = HANDLE;
    static Handle Invalid() { return nullptr; }
    static void Close(Handle handle) { CloseHandle(handle); }
};
using TKernelHandle = TUniqueHandle<TKernelHandleTraits>;

// Fonts, brushes, bitmaps and pens.
template <typename GdiHandle>
struct TGdiObjectTraits {
    using Handle = GdiHandle;
    static Handle Invalid() { return nullptr; }
    static void Close(Handle object) { DeleteObject(object); }
};
using TFont = TUniqueHandle<TGdiObjectTraits<HFONT>>;
using TBrush = TUniqueHandle<TGdiObjectTraits<HBRUSH>>;
using TBitmap = TUniqueHandle<TGdiObjectTraits<HBITMAP>>;
using TPen = TUniqueHandle<TGdiObjectTraits<HPEN>>;
