#include "support/crypto_calls.h"

#include "support/rw_crypt_exception.h"

namespace {

template <typename Function>
void LookUp(HMODULE library, const char* name, Function& function) {
    const FARPROC address = library == nullptr ? nullptr : GetProcAddress(library, name);
    if (address == nullptr) {
        RaiseCryptError(name, GetLastError());
    }
    // By way of void*: the platform hands out every function under one made-up type.
    function = reinterpret_cast<Function>(reinterpret_cast<void*>(address));
}

TCryptoCalls LookUpCryptoCalls() {
    const HMODULE library = LoadLibraryExW(L"advapi32.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    TCryptoCalls calls{};
    LookUp(library, "CryptGetDefaultProviderW", calls.CryptGetDefaultProviderW);
    LookUp(library, "CryptEnumProvidersW", calls.CryptEnumProvidersW);
    LookUp(library, "CryptAcquireContextW", calls.CryptAcquireContextW);
    LookUp(library, "CryptReleaseContext", calls.CryptReleaseContext);
    LookUp(library, "CryptCreateHash", calls.CryptCreateHash);
    LookUp(library, "CryptHashData", calls.CryptHashData);
    LookUp(library, "CryptGetHashParam", calls.CryptGetHashParam);
    LookUp(library, "CryptDestroyHash", calls.CryptDestroyHash);
    LookUp(library, "CryptDeriveKey", calls.CryptDeriveKey);
    LookUp(library, "CryptEncrypt", calls.CryptEncrypt);
    LookUp(library, "CryptDecrypt", calls.CryptDecrypt);
    LookUp(library, "CryptDestroyKey", calls.CryptDestroyKey);
    return calls;
}

}  // namespace

const TCryptoCalls& SystemCryptoCalls() {
    static const TCryptoCalls calls = LookUpCryptoCalls();
    return calls;
}
