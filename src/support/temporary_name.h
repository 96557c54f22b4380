// The names under which files lie in the backup tree while they are being copied.
#pragma once

#include <string>
#include <string_view>

// A name that no other file has, in no folder, at any time; in use while this object lives. Some 50
// characters, so that it fits beside a target whose own name has the greatest length. Several threads may
// have their own.
class TTemporaryName {
public:
    TTemporaryName();
    TTemporaryName(const TTemporaryName&) = delete;
    TTemporaryName& operator=(const TTemporaryName&) = delete;
    ~TTemporaryName();

    const std::wstring& Text() const { return text_; }

private:
    std::wstring text_;
};

// Whether a name in a backup folder is a temporary one: never a copy of anything.
bool IsTemporaryName(std::wstring_view name);

// Whether it is one that nobody in this process is using: what an interrupted run left behind.
bool IsLeftOverTemporaryName(std::wstring_view name);
