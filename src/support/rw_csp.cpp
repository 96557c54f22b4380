#include "support/rw_csp.h"

#include <algorithm>
#include <cassert>
#include <optional>

#include "support/base64.h"
#include "support/hex.h"
#include "support/text.h"
#include "support/wipe.h"

namespace {

constexpr std::wstring_view kDefaultProviderName = L"(Default)";
constexpr DWORD kProviderNameLength = 1024;  // characters, terminator included
// A key length stands in the upper half of the flags of CryptDeriveKey.
constexpr unsigned kKeyLengthShift = 16;

// A hash object of the system, destroyed when it goes out of scope.
class THashObject {
public:
    THashObject(const TCryptoCalls& calls, HCRYPTPROV provider, ALG_ID algorithm) : calls_(calls) {
        if (!calls_.CryptCreateHash(provider, algorithm, 0, 0, &handle_)) {
            RaiseCryptError("CryptCreateHash", GetLastError());
        }
    }
    THashObject(const THashObject&) = delete;
    THashObject& operator=(const THashObject&) = delete;
    ~THashObject() { calls_.CryptDestroyHash(handle_); }

    void Add(const void* bytes, std::size_t size) const {
        // An empty text may have no address at all, which the system takes for a mistake.
        const void* address = size == 0 ? "" : bytes;
        if (!calls_.CryptHashData(handle_, static_cast<const BYTE*>(address), static_cast<DWORD>(size), 0)) {
            RaiseCryptError("CryptHashData", GetLastError());
        }
    }

    HCRYPTHASH Get() const { return handle_; }

private:
    const TCryptoCalls& calls_;
    HCRYPTHASH handle_ = 0;
};

std::size_t DigestLength(ALG_ID algorithm) {
    switch (algorithm) {
        case CALG_MD2:
        case CALG_MD4:
        case CALG_MD5:
            return 16;
        case CALG_SHA1:
            return 20;
        case CALG_SHA_256:
            return 32;
        case CALG_SHA_384:
            return 48;
        case CALG_SHA_512:
            return 64;
        default:
            throw ERwCryptException("The requested algorithm is not supported",
                                    static_cast<DWORD>(NTE_BAD_ALGID));
    }
}

[[noreturn]] void RaiseUnknownEncoding() {
    throw ERwCryptException("The specified NetEncoding is not supported!");
}

TBase64Alphabet AlphabetOf(TRwEncoding encoding) {
    return encoding == TRwEncoding::Base64Url ? TBase64Alphabet::UrlSafe : TBase64Alphabet::Standard;
}

std::wstring Encode(std::span<const std::uint8_t> bytes, TRwEncoding encoding) {
    switch (encoding) {
        case TRwEncoding::Base64:
        case TRwEncoding::Base64Url:
            return Base64Encode(bytes, AlphabetOf(encoding));
        case TRwEncoding::Hex: {
            std::wstring text(2 * bytes.size(), L'0');
            WriteHex(bytes, text.data());
            return text;
        }
    }
    RaiseUnknownEncoding();
}

std::vector<std::uint8_t> Decode(std::wstring_view text, TRwEncoding encoding) {
    switch (encoding) {
        case TRwEncoding::Base64:
        case TRwEncoding::Base64Url:
            if (auto bytes = Base64Decode(text, AlphabetOf(encoding))) {
                return *std::move(bytes);
            }
            throw std::runtime_error("The text is not valid Base64!");
        case TRwEncoding::Hex: {
            std::vector<std::uint8_t> bytes(text.size() / 2);
            if (ReadHex(text, std::span(bytes))) {
                return bytes;
            }
            throw std::runtime_error("The text is not valid hexadecimal text!");
        }
    }
    RaiseUnknownEncoding();
}

DWORD DecryptFlags(TRwPadding padding) {
    switch (padding) {
        case TRwPadding::Oaep:
            return CRYPT_OAEP;
        case TRwPadding::NoPaddingCheck:
            return CRYPT_DECRYPT_RSA_NO_PADDING_CHECK;
        case TRwPadding::Default:
            break;
    }
    return 0;
}

void CheckKeyOptions(const TRwCspKeyOptions& options, DWORD keyLength) {
    if (options.kcArchivable) {
        throw ERwCryptException("The kcArchivable option is not applicable to the DeriveKey!");
    }
    if (options.kcForceHighProtection) {
        throw ERwCryptException("The kcForceHighProtection option is not applicable to the DeriveKey!");
    }
    if (options.kcUserProtected) {
        throw ERwCryptException("The kcUserProtected option is not applicable to the DeriveKey!");
    }
    if (options.kcNoSalt && keyLength != 40) {
        throw ERwCryptException("The kcNoSalt option is only applicable with 40bits symmetric keys!");
    }
}

// The type of the installed provider of that name; nothing when there is none.
std::optional<DWORD> InstalledProviderType(const TCryptoCalls& calls, std::wstring_view name) {
    for (DWORD index = 0;; ++index) {
        wchar_t installed[kProviderNameLength];
        DWORD size = sizeof installed;
        DWORD type = 0;
        if (!calls.CryptEnumProvidersW(index, nullptr, 0, &type, installed, &size)) {
            const DWORD error = GetLastError();
            if (error == ERROR_NO_MORE_ITEMS) {
                return std::nullopt;
            }
            RaiseCryptError("CryptEnumProviders", error);
        }
        if (name == installed) {
            return type;
        }
    }
}

}  // namespace

std::wstring TRwCSP::DefaultProvider(DWORD providerType) const {
    wchar_t name[kProviderNameLength];
    DWORD size = sizeof name;
    if (!options_.machineKeyset &&
        calls_.CryptGetDefaultProviderW(providerType, nullptr, CRYPT_USER_DEFAULT, name, &size)) {
        return name;
    }
    // A user need not have a default of his own.
    size = sizeof name;
    if (!calls_.CryptGetDefaultProviderW(providerType, nullptr, CRYPT_MACHINE_DEFAULT, name, &size)) {
        RaiseCryptError("CryptGetDefaultProvider", GetLastError());
    }
    return name;
}

void TRwCSP::SetProviderName(std::wstring_view name) {
    assert(!Active());
    if (name.empty() || name == kDefaultProviderName) {
        providerName_ = kDefaultProviderName;
        providerType_ = PROV_RSA_FULL;
        return;
    }
    const std::optional<DWORD> type = InstalledProviderType(calls_, name);
    if (!type) {
        throw ERwCryptException("There is no provider with the name \"" + ToUtf8(name) + "\"!");
    }
    providerName_ = name;
    providerType_ = *type;
}

void TRwCSP::SetContainerName(std::wstring_view name) {
    assert(!Active());
    containerName_ = name;
}

void TRwCSP::SetOptions(const TRwCspOptions& options) {
    assert(!Active());
    options_ = options;
}

void TRwCSP::SetActive(bool active) {
    if (active == Active()) {
        return;
    }
    if (!active) {
        calls_.CryptReleaseContext(provider_, 0);
        provider_ = 0;
        return;
    }
    if (options_.verifyContext && !containerName_.empty()) {
        throw ERwCryptException("The ContainerName must be empty when using the CRYPT_VERIFYCONTEXT flag!",
                                static_cast<DWORD>(NTE_BAD_FLAGS));
    }
    const DWORD flags = (options_.verifyContext ? CRYPT_VERIFYCONTEXT : 0) |
                        (options_.machineKeyset ? CRYPT_MACHINE_KEYSET : 0) |
                        (options_.silent ? CRYPT_SILENT : 0);
    const wchar_t* container = containerName_.empty() ? nullptr : containerName_.c_str();
    const wchar_t* name = providerName_ == kDefaultProviderName ? nullptr : providerName_.c_str();
    HCRYPTPROV provider = 0;
    if (!calls_.CryptAcquireContextW(&provider, container, name, providerType_, flags)) {
        RaiseCryptError("CryptAcquireContext", GetLastError());
    }
    provider_ = provider;
}

void TRwCSP::ActivateDefaultProvider(DWORD providerType) {
    if (!Active()) {
        SetProviderName(DefaultProvider(providerType));
        SetActive(true);
    }
}

TRwCspKeyReference TRwCSP::DeriveKey(ALG_ID algorithm, std::wstring_view passPhrase,
                                     const TRwCspKeyOptions& options, DWORD keyLength) const {
    if (!Active()) {
        throw ERwCryptException("The GenerateKey can only be executed when the CSP is active!");
    }
    CheckKeyOptions(options, keyLength);
    const DWORD flags =
        keyLength << kKeyLengthShift | CRYPT_NO_SALT | (options.kcExportable ? CRYPT_EXPORTABLE : 0);
    const THashObject hash(calls_, provider_, CALG_SHA1);
    hash.Add(passPhrase.data(), passPhrase.size() * sizeof(wchar_t));
    HCRYPTKEY key = 0;
    if (!calls_.CryptDeriveKey(provider_, algorithm, hash.Get(), flags, &key)) {
        RaiseCryptError("CryptDeriveKey", GetLastError());
    }
    return std::make_shared<const TRwCspKey>(calls_, key, algorithm);
}

std::wstring TRwCSP::EncryptString(std::wstring_view text, const TRwCspKey& key, TRwEncoding encoding) const {
    const auto plainSize = static_cast<DWORD>(text.size() * sizeof(wchar_t));
    // First without a buffer, to learn the length of the output.
    DWORD size = plainSize;
    if (!calls_.CryptEncrypt(key.Handle(), 0, TRUE, 0, nullptr, &size, 0)) {
        RaiseCryptError("CryptEncrypt", GetLastError());
    }
    std::vector<std::uint8_t> bytes(size);
    std::copy_n(reinterpret_cast<const std::uint8_t*>(text.data()), plainSize, bytes.data());
    DWORD length = plainSize;
    if (!calls_.CryptEncrypt(key.Handle(), 0, TRUE, 0, bytes.data(), &length, size)) {
        const DWORD error = GetLastError();
        WipeBytes(bytes);
        RaiseCryptError("CryptEncrypt", error);
    }
    return Encode(std::span(bytes).first(length), encoding);
}

std::wstring TRwCSP::DecryptString(std::wstring_view text, const TRwCspKey& key, TRwEncoding encoding,
                                   TRwPadding padding) const {
    std::vector<std::uint8_t> bytes = Decode(text, encoding);
    auto length = static_cast<DWORD>(bytes.size());
    if (!calls_.CryptDecrypt(key.Handle(), 0, TRUE, DecryptFlags(padding), bytes.data(), &length)) {
        const DWORD error = GetLastError();
        WipeBytes(bytes);
        if (error == static_cast<DWORD>(NTE_BAD_DATA)) {
            throw ERwCryptBadData();
        }
        RaiseCryptError("CryptDecrypt", error);
    }
    std::wstring plain(length / sizeof(wchar_t), L'\0');
    std::copy_n(bytes.data(), plain.size() * sizeof(wchar_t), reinterpret_cast<std::uint8_t*>(plain.data()));
    WipeBytes(bytes);
    return plain;
}

TRwDigest TRwCSP::HashBuffer(ALG_ID algorithm, const void* bytes, std::size_t size) const {
    if (!Active()) {
        throw ERwCryptException("The HashBuffer can only be executed when the CSP is active!");
    }
    TRwDigest digest;
    digest.length = DigestLength(algorithm);
    const THashObject hash(calls_, provider_, algorithm);
    hash.Add(bytes, size);
    auto length = static_cast<DWORD>(digest.length);
    if (!calls_.CryptGetHashParam(hash.Get(), HP_HASHVAL, digest.bytes.data(), &length, 0)) {
        RaiseCryptError("CryptGetHashParam", GetLastError());
    }
    assert(length == digest.length);
    return digest;
}

std::wstring TRwCSP::HashString(std::wstring_view text, TRwEncoding encoding, ALG_ID algorithm) const {
    return Encode(HashBuffer(algorithm, text.data(), text.size() * sizeof(wchar_t)).View(), encoding);
}
