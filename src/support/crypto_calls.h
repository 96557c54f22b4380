// The functions of the system's cryptographic interface that the program uses.
#pragma once

#include <windows.h>

#include <wincrypt.h>

// One function pointer per call, with the platform's own signature, so that a test can make a call fail.
struct TCryptoCalls {
    decltype(&::CryptGetDefaultProviderW) CryptGetDefaultProviderW;
    decltype(&::CryptEnumProvidersW) CryptEnumProvidersW;
    decltype(&::CryptAcquireContextW) CryptAcquireContextW;
    decltype(&::CryptReleaseContext) CryptReleaseContext;
    decltype(&::CryptCreateHash) CryptCreateHash;
    decltype(&::CryptHashData) CryptHashData;
    decltype(&::CryptGetHashParam) CryptGetHashParam;
    decltype(&::CryptDestroyHash) CryptDestroyHash;
    decltype(&::CryptDeriveKey) CryptDeriveKey;
    decltype(&::CryptEncrypt) CryptEncrypt;
    decltype(&::CryptDecrypt) CryptDecrypt;
    decltype(&::CryptDestroyKey) CryptDestroyKey;
};

// The real functions, looked up by name in advapi32 when this is first called. Throws ERwCryptException
// when one of them is missing.
const TCryptoCalls& SystemCryptoCalls();
