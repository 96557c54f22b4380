// The access rights of files.
#pragma once

#include <memory>
#include <string>

#include "support/platform_calls.h"

// The rights that a file was given beyond those of its folder; none where the file system knows no rights or
// does not tell them.
class TAccessRights {
public:
    TAccessRights(const TPlatformCalls& calls, std::wstring path);

    // Gives them to another file in the same folder, if there are any. What is refused is left as it is.
    void GiveTo(std::wstring path) const;

private:
    const TPlatformCalls& calls_;
    std::unique_ptr<void, decltype(&LocalFree)> descriptor_;
    ACL* list_ = nullptr;  // in the descriptor
    bool inheritsNothing_ = false;
};
