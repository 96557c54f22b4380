#include "support/access_rights.h"

#include <aclapi.h>

#include <memory>

namespace {

bool HasEntriesOfItsOwn(ACL* list) {
    for (DWORD index = 0; list != nullptr && index < list->AceCount; ++index) {
        void* entry = nullptr;
        if (GetAce(list, index, &entry) &&
            (static_cast<const ACE_HEADER*>(entry)->AceFlags & INHERITED_ACE) == 0) {
            return true;
        }
    }
    return false;
}

}  // namespace

void TakeOverAccessRights(const TPlatformCalls& calls, std::wstring from, std::wstring to) {
    ACL* list = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (calls.GetNamedSecurityInfoW(from.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                                    &list, nullptr, &descriptor) != ERROR_SUCCESS) {
        return;
    }
    const std::unique_ptr<void, decltype(&LocalFree)> owner(descriptor, &LocalFree);
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    DWORD revision = 0;
    GetSecurityDescriptorControl(descriptor, &control, &revision);
    const bool inheritsNothing = (control & SE_DACL_PROTECTED) != 0;
    if (list != nullptr && (inheritsNothing || HasEntriesOfItsOwn(list))) {
        // What it inherits besides is the folder's, for both.
        calls.SetNamedSecurityInfoW(
            to.data(), SE_FILE_OBJECT,
            DACL_SECURITY_INFORMATION | (inheritsNothing ? PROTECTED_DACL_SECURITY_INFORMATION
                                                         : UNPROTECTED_DACL_SECURITY_INFORMATION),
            nullptr, nullptr, list, nullptr);
    }
}
