#include "support/access_rights.h"

#include <aclapi.h>

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

TAccessRights::TAccessRights(const TPlatformCalls& calls, std::wstring path)
    : calls_(calls), descriptor_(nullptr, &LocalFree) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (calls_.GetNamedSecurityInfoW(path.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                                     &list_, nullptr, &descriptor) != ERROR_SUCCESS) {
        list_ = nullptr;
        return;
    }
    descriptor_.reset(descriptor);
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    DWORD revision = 0;
    GetSecurityDescriptorControl(descriptor, &control, &revision);
    inheritsNothing_ = (control & SE_DACL_PROTECTED) != 0;
}

void TAccessRights::GiveTo(std::wstring path) const {
    if (list_ == nullptr || (!inheritsNothing_ && !HasEntriesOfItsOwn(list_))) {
        return;
    }
    // What it inherits besides is the folder's, for both.
    calls_.SetNamedSecurityInfoW(
        path.data(), SE_FILE_OBJECT,
        DACL_SECURITY_INFORMATION |
            (inheritsNothing_ ? PROTECTED_DACL_SECURITY_INFORMATION : UNPROTECTED_DACL_SECURITY_INFORMATION),
        nullptr, nullptr, list_, nullptr);
}
