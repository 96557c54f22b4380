#include "support/rw_csp.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace {

// The exception that an action throws, as its message and code; empty when it throws none.
struct TFailure {
    std::string message;
    DWORD code = 0;
};

TFailure FailureOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const ERwCryptException& error) {
        return {error.what(), error.Code()};
    }
    return {};
}

constexpr DWORD Code(HRESULT code) {
    return static_cast<DWORD>(code);
}

TEST(RwCsp, HasOneDigestPerAlgorithm) {
    TRwCSP csp;
    csp.ActivateDefaultProvider(PROV_RSA_AES);
    // The digests of no bytes at all, from the algorithms' own documents.
    EXPECT_EQ(csp.HashString(L"", TRwEncoding::Hex, CALG_MD5), L"D41D8CD98F00B204E9800998ECF8427E");
    EXPECT_EQ(csp.HashString(L"", TRwEncoding::Hex, CALG_SHA1), L"DA39A3EE5E6B4B0D3255BFEF95601890AFD80709");
    EXPECT_EQ(csp.HashString(std::wstring_view(), TRwEncoding::Hex, CALG_SHA_256),
              L"E3B0C44298FC1C149AFBF4C8996FB92427AE41E4649B934CA495991B7852B855");
    EXPECT_EQ(csp.HashString(L"", TRwEncoding::Base64, CALG_SHA1), L"2jmj7l5rSw0yVb/vlWAYkK/YBwk=");
    EXPECT_EQ(csp.HashString(L"", TRwEncoding::Base64Url, CALG_SHA1), L"2jmj7l5rSw0yVb_vlWAYkK_YBwk=");
    EXPECT_EQ(csp.HashBuffer(CALG_SHA_384, "", 0).length, 48u);
    EXPECT_EQ(csp.HashBuffer(CALG_SHA_512, "", 0).length, 64u);
    EXPECT_EQ(csp.HashBuffer(CALG_MD2, "", 0).length, 16u);
    EXPECT_EQ(csp.HashBuffer(CALG_MD4, "", 0).length, 16u);
}

TEST(RwCsp, RefusesWhatItDoesNotKnow) {
    TRwCSP csp;
    EXPECT_FALSE(csp.Active());
    EXPECT_EQ(FailureOf([&] { (void)csp.HashBuffer(CALG_SHA_256, "", 0); }).message,
              "The HashBuffer can only be executed when the CSP is active!");
    EXPECT_EQ(FailureOf([&] { (void)csp.DeriveKey(CALG_AES_256, L"x", {}, 0); }).message,
              "The GenerateKey can only be executed when the CSP is active!");
    csp.ActivateDefaultProvider(PROV_RSA_AES);
    EXPECT_TRUE(csp.Active());
    const TFailure algorithm = FailureOf([&] { (void)csp.HashBuffer(CALG_MAC, "", 0); });
    EXPECT_EQ(algorithm.message, "The requested algorithm is not supported");
    EXPECT_EQ(algorithm.code, 0x80090008);
    EXPECT_EQ(FailureOf([&] { (void)csp.HashString(L"x", static_cast<TRwEncoding>(3), CALG_SHA1); }).message,
              "The specified NetEncoding is not supported!");
    csp.SetActive(false);
    EXPECT_FALSE(csp.Active());
}

TEST(RwCsp, TakesProvidersByName) {
    TRwCSP csp;
    EXPECT_EQ(csp.ProviderName(), L"(Default)");
    EXPECT_EQ(FailureOf([&] { csp.SetProviderName(L"M\u00FCllers Provider"); }).message,
              "There is no provider with the name \"M\xC3\xBCllers Provider\"!");
    csp.SetProviderName(csp.DefaultProvider(PROV_RSA_AES));
    EXPECT_EQ(csp.ProviderType(), DWORD{PROV_RSA_AES});
    for (const std::wstring_view name : {L"", L"(Default)"}) {
        csp.SetProviderName(name);
        EXPECT_EQ(csp.ProviderName(), L"(Default)");
        EXPECT_EQ(csp.ProviderType(), DWORD{PROV_RSA_FULL});
    }
    csp.SetActive(true);
    EXPECT_TRUE(csp.Active());
}

TEST(RwCsp, WithoutAContainerByDefault) {
    TRwCSP csp;
    csp.SetContainerName(L"mine");
    const TFailure failure = FailureOf([&] { csp.SetActive(true); });
    EXPECT_EQ(failure.message, "The ContainerName must be empty when using the CRYPT_VERIFYCONTEXT flag!");
    EXPECT_EQ(failure.code, 0x80090009);
    EXPECT_FALSE(csp.Active());
}

TEST(RwCsp, RefusesKeyOptionsWithoutMeaning) {
    TRwCSP csp;
    csp.ActivateDefaultProvider(PROV_RSA_AES);
    const auto refusal = [&csp](const TRwCspKeyOptions& options) {
        return FailureOf([&] { (void)csp.DeriveKey(CALG_AES_256, L"x", options, 0); }).message;
    };
    EXPECT_EQ(refusal({.kcArchivable = true}), "The kcArchivable option is not applicable to the DeriveKey!");
    EXPECT_EQ(refusal({.kcForceHighProtection = true}),
              "The kcForceHighProtection option is not applicable to the DeriveKey!");
    EXPECT_EQ(refusal({.kcUserProtected = true}),
              "The kcUserProtected option is not applicable to the DeriveKey!");
    EXPECT_EQ(refusal({.kcNoSalt = true}),
              "The kcNoSalt option is only applicable with 40bits symmetric keys!");
    EXPECT_EQ(refusal({.kcExportable = true}), "");
}

TEST(RwCsp, EncryptsInEveryEncoding) {
    TRwCSP csp;
    csp.ActivateDefaultProvider(PROV_RSA_AES);
    const TRwCspKeyReference key = csp.DeriveKey(CALG_AES_256, L"secret", {}, 0);
    EXPECT_EQ(key->Algorithm(), ALG_ID{CALG_AES_256});
    for (const auto encoding : {TRwEncoding::Base64, TRwEncoding::Hex, TRwEncoding::Base64Url}) {
        for (const std::wstring_view text :
             {L"", L"x", L"1234567", L"12345678", L"\u4E2D\u6587 \U0001F600"}) {
            const std::wstring encrypted = csp.EncryptString(text, *key, encoding);
            EXPECT_EQ(csp.DecryptString(encrypted, *key, encoding, TRwPadding::Default), text);
        }
    }
    EXPECT_THROW((void)csp.DecryptString(L"xyz", *key, TRwEncoding::Base64, TRwPadding::Default),
                 std::runtime_error);
    EXPECT_THROW((void)csp.DecryptString(L"xyz", *key, TRwEncoding::Hex, TRwPadding::Default),
                 std::runtime_error);
}

template <typename Result = BOOL>
Result Fail(DWORD code) {
    SetLastError(code);
    return FALSE;
}

TEST(RwCsp, NamesTheCallThatFailedAndItsCode) {
    const std::string prefix = "The following error was raised while trying to execute ";
    const auto hashFailure = [](const TCryptoCalls& calls) {
        return FailureOf([&calls] {
            TRwCSP csp(calls);
            csp.ActivateDefaultProvider(PROV_RSA_AES);
            (void)csp.HashBuffer(CALG_SHA_256, "abc", 3);
        });
    };
    TCryptoCalls calls = SystemCryptoCalls();
    calls.CryptGetDefaultProviderW = [](DWORD, DWORD*, DWORD, wchar_t*, DWORD*) {
        return Fail(Code(NTE_PROV_TYPE_NOT_DEF));
    };
    EXPECT_EQ(hashFailure(calls).message, prefix + "CryptGetDefaultProvider\r\nNTE_PROV_TYPE_NOT_DEF");
    calls = SystemCryptoCalls();
    calls.CryptAcquireContextW = [](HCRYPTPROV*, const wchar_t*, const wchar_t*, DWORD, DWORD) {
        return Fail(Code(NTE_KEYSET_NOT_DEF));
    };
    EXPECT_EQ(hashFailure(calls).message, prefix + "CryptAcquireContext\r\nNTE_KEYSET_NOT_DEF");
    calls = SystemCryptoCalls();
    calls.CryptCreateHash = [](HCRYPTPROV, ALG_ID, HCRYPTKEY, DWORD, HCRYPTHASH*) {
        return Fail(Code(NTE_BAD_UID));
    };
    EXPECT_EQ(hashFailure(calls).message, prefix + "CryptCreateHash\r\nNTE_BAD_UID");

    // The code is the call's own, also when cleaning up afterwards fails in its own way; and cleaned up it
    // is.
    static int destroyed;
    destroyed = 0;
    calls = SystemCryptoCalls();
    calls.CryptHashData = [](HCRYPTHASH, const BYTE*, DWORD, DWORD) { return Fail(ERROR_BUSY); };
    calls.CryptDestroyHash = [](HCRYPTHASH hash) {
        ++destroyed;
        CryptDestroyHash(hash);
        return Fail(ERROR_INVALID_HANDLE);
    };
    const TFailure failure = hashFailure(calls);
    EXPECT_EQ(failure.message, prefix + "CryptHashData\r\nERROR_BUSY");
    EXPECT_EQ(failure.code, DWORD{ERROR_BUSY});
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(CryptErrorName(0x80091234), "0x80091234");
}

TEST(RwCsp, AsksForTheContextAsItShould) {
    static std::wstring asked;
    asked.clear();
    TCryptoCalls calls = SystemCryptoCalls();
    calls.CryptGetDefaultProviderW = [](DWORD type, DWORD* reserved, DWORD flags, wchar_t* name,
                                        DWORD* size) {
        asked += std::to_wstring(type) + L"/" + std::to_wstring(flags) + L"/" + std::to_wstring(*size) + L" ";
        // A user without a default of his own, whatever this one has; the size spoilt as a failure may.
        return flags == CRYPT_USER_DEFAULT ? (*size = 0, Fail(Code(NTE_PROV_TYPE_NOT_DEF)))
                                           : CryptGetDefaultProviderW(type, reserved, flags, name, size);
    };
    calls.CryptAcquireContextW = [](HCRYPTPROV* provider, const wchar_t* container, const wchar_t* name,
                                    DWORD type, DWORD flags) {
        asked +=
            (container == nullptr ? L"-/" : L"+/") + std::to_wstring(type) + L"/" + std::to_wstring(flags);
        return CryptAcquireContextW(provider, container, name, type, flags);
    };
    TRwCSP csp(calls);
    csp.ActivateDefaultProvider(PROV_RSA_AES);
    csp.ActivateDefaultProvider(PROV_RSA_AES);
    EXPECT_EQ(asked, L"24/2/2048 24/1/2048 -/24/4026531840");
}

TEST(RwCsp, BadDataHasItsOwnException) {
    TCryptoCalls calls = SystemCryptoCalls();
    calls.CryptDecrypt = [](HCRYPTKEY, HCRYPTHASH, BOOL, DWORD, BYTE*, DWORD*) {
        return Fail(Code(NTE_BAD_KEY));
    };
    TRwCSP csp(calls);
    csp.ActivateDefaultProvider(PROV_RSA_AES);
    const TRwCspKeyReference key = csp.DeriveKey(CALG_AES_256, L"x", {}, 0);
    const auto decrypt = [&] {
        (void)csp.DecryptString(L"AAAA", *key, TRwEncoding::Base64, TRwPadding::Default);
    };
    EXPECT_EQ(FailureOf(decrypt).message,
              "The following error was raised while trying to execute CryptDecrypt\r\nNTE_BAD_KEY");
    calls.CryptDecrypt = [](HCRYPTKEY, HCRYPTHASH, BOOL, DWORD, BYTE*, DWORD*) {
        return Fail(Code(NTE_BAD_DATA));
    };
    EXPECT_THROW(decrypt(), ERwCryptBadData);
}

TEST(RwCsp, DropsAnOddLastByteAndPassesThePaddingOn) {
    static DWORD given;
    TCryptoCalls calls = SystemCryptoCalls();
    calls.CryptDecrypt = [](HCRYPTKEY, HCRYPTHASH, BOOL, DWORD flags, BYTE* bytes, DWORD* size) {
        given = flags;
        bytes[0] = 'a', bytes[1] = 0, bytes[2] = 'b';
        *size = 3;
        return TRUE;
    };
    TRwCSP csp(calls);
    csp.ActivateDefaultProvider(PROV_RSA_AES);
    const TRwCspKeyReference key = csp.DeriveKey(CALG_AES_256, L"x", {}, 0);
    for (const auto& [padding, flags] :
         {std::pair{TRwPadding::Default, 0u}, {TRwPadding::Oaep, 64u}, {TRwPadding::NoPaddingCheck, 32u}}) {
        EXPECT_EQ(csp.DecryptString(L"AAAA", *key, TRwEncoding::Base64, padding), L"a");
        EXPECT_EQ(given, flags);
    }
}

}  // namespace
