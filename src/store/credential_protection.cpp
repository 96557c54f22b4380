#include "store/credential_protection.h"

#include "support/problem.h"
#include "support/rw_csp.h"
#include "support/text.h"

namespace {

constexpr std::wstring_view kPassPhrase = L"5D1E2A90-7B3C-4E8F-9A61-0C2B7D4E3F18";

TRwCspKeyReference ProtectionKey(TRwCSP& csp) {
    csp.ActivateDefaultProvider(PROV_RSA_AES);
    return csp.DeriveKey(CALG_AES_256, kPassPhrase, {}, 0);
}

}  // namespace

std::wstring Protect(std::wstring_view plain) {
    if (plain.empty()) {
        return {};
    }
    TRwCSP csp;
    return csp.EncryptString(plain, *ProtectionKey(csp), TRwEncoding::Base64);
}

std::wstring Unprotect(std::wstring_view protectedText) {
    if (protectedText.empty()) {
        return {};
    }
    try {
        TRwCSP csp;
        return csp.DecryptString(protectedText, *ProtectionKey(csp), TRwEncoding::Base64,
                                 TRwPadding::Default);
    } catch (const std::exception& error) {
        // Callers show the message and need no more of it.
        throw EProblem({.what = TProblemKind::ProtectedTextDamaged, .detail = FromUtf8Lossy(error.what())});
    }
}
