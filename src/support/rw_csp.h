// Hashing and encryption by the system's cryptographic service providers.
#pragma once

#include <windows.h>

#include <wincrypt.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "support/crypto_calls.h"
#include "support/rw_crypt_exception.h"

// How bytes are written as text.
enum class TRwEncoding {
    Base64 = 0,
    Hex = 1,  // upper case
    Base64Url = 2,
};

// What CryptDecrypt is told about padding; only keys of public-key algorithms know a difference.
enum class TRwPadding { Default = 0, Oaep = 1, NoPaddingCheck = 2 };

// How a context is acquired.
struct TRwCspOptions {
    bool verifyContext = true;  // no key container: nothing is stored
    bool machineKeyset = false;
    bool silent = false;
};

// How a key is derived. The members in the second group exist to be refused: they have no meaning for a
// derived key.
struct TRwCspKeyOptions {
    bool kcExportable = false;
    bool kcNoSalt = false;  // only for 40-bit keys

    bool kcArchivable = false;
    bool kcForceHighProtection = false;
    bool kcUserProtected = false;
};

// Owns one key of a context. Must be gone before the context is.
class TRwCspKey {
public:
    TRwCspKey(const TCryptoCalls& calls, HCRYPTKEY handle, ALG_ID algorithm)
        : calls_(calls), handle_(handle), algorithm_(algorithm) {}
    TRwCspKey(const TRwCspKey&) = delete;
    TRwCspKey& operator=(const TRwCspKey&) = delete;
    ~TRwCspKey() { calls_.CryptDestroyKey(handle_); }

    HCRYPTKEY Handle() const { return handle_; }
    ALG_ID Algorithm() const { return algorithm_; }

private:
    const TCryptoCalls& calls_;
    HCRYPTKEY handle_;
    ALG_ID algorithm_;
};
using TRwCspKeyReference = std::shared_ptr<const TRwCspKey>;

// A digest of up to 64 bytes.
struct TRwDigest {
    std::array<std::uint8_t, 64> bytes{};
    std::size_t length = 0;

    std::span<const std::uint8_t> View() const { return std::span(bytes).first(length); }
};

// A cryptographic service provider: chosen by name, then active while it holds a context of the system.
// Every member that fails throws ERwCryptException. While it stays active, HashBuffer and HashString may be
// called on any number of threads at once.
class TRwCSP {
public:
    explicit TRwCSP(const TCryptoCalls& calls = SystemCryptoCalls()) : calls_(calls) {}
    TRwCSP(const TRwCSP&) = delete;
    TRwCSP& operator=(const TRwCSP&) = delete;
    ~TRwCSP() { SetActive(false); }

    // The name of the user's default provider of that type; the machine's, where the user has none or with
    // machineKeyset.
    std::wstring DefaultProvider(DWORD providerType) const;

    // The provider to use, as installed. Empty or "(Default)" leaves the choice to the system, among
    // providers of type 1 (PROV_RSA_FULL). These three can only be set while inactive.
    const std::wstring& ProviderName() const { return providerName_; }
    DWORD ProviderType() const { return providerType_; }
    void SetProviderName(std::wstring_view name);
    void SetContainerName(std::wstring_view name);
    void SetOptions(const TRwCspOptions& options);

    bool Active() const { return provider_ != 0; }
    void SetActive(bool active);
    // What every use in this program begins with: chooses the default provider of that type and activates
    // it, unless a context is already held.
    void ActivateDefaultProvider(DWORD providerType);

    // A key made from a pass phrase by way of its SHA-1; keyLength in bits, 0 for the algorithm's own.
    TRwCspKeyReference DeriveKey(ALG_ID algorithm, std::wstring_view passPhrase,
                                 const TRwCspKeyOptions& options, DWORD keyLength) const;

    // What is encrypted is the text's UTF-16LE bytes. Decrypting drops an odd last byte, and throws
    // std::runtime_error when the text is not in that encoding.
    std::wstring EncryptString(std::wstring_view text, const TRwCspKey& key, TRwEncoding encoding) const;
    std::wstring DecryptString(std::wstring_view text, const TRwCspKey& key, TRwEncoding encoding,
                               TRwPadding padding) const;

    // The digest of bytes, or of a text's UTF-16LE bytes.
    TRwDigest HashBuffer(ALG_ID algorithm, const void* bytes, std::size_t size) const;
    std::wstring HashString(std::wstring_view text, TRwEncoding encoding, ALG_ID algorithm) const;

private:
    const TCryptoCalls& calls_;
    HCRYPTPROV provider_ = 0;
    std::wstring providerName_ = L"(Default)";
    DWORD providerType_ = PROV_RSA_FULL;
    std::wstring containerName_;
    TRwCspOptions options_;
};
