#include "support/rw_crypt_exception.h"

#include <winerror.h>

#include <cstdio>

namespace {

struct TNamedCode {
    DWORD code;
    const char* name;
};

// The codes that the documentation of the functions in TCryptoCalls names.
constexpr TNamedCode kNamedCodes[] = {
    {static_cast<DWORD>(NTE_BAD_UID), "NTE_BAD_UID"},
    {static_cast<DWORD>(NTE_BAD_HASH), "NTE_BAD_HASH"},
    {static_cast<DWORD>(NTE_BAD_KEY), "NTE_BAD_KEY"},
    {static_cast<DWORD>(NTE_BAD_LEN), "NTE_BAD_LEN"},
    {static_cast<DWORD>(NTE_BAD_DATA), "NTE_BAD_DATA"},
    {static_cast<DWORD>(NTE_BAD_SIGNATURE), "NTE_BAD_SIGNATURE"},
    {static_cast<DWORD>(NTE_BAD_VER), "NTE_BAD_VER"},
    {static_cast<DWORD>(NTE_BAD_ALGID), "NTE_BAD_ALGID"},
    {static_cast<DWORD>(NTE_BAD_FLAGS), "NTE_BAD_FLAGS"},
    {static_cast<DWORD>(NTE_BAD_TYPE), "NTE_BAD_TYPE"},
    {static_cast<DWORD>(NTE_BAD_KEY_STATE), "NTE_BAD_KEY_STATE"},
    {static_cast<DWORD>(NTE_BAD_HASH_STATE), "NTE_BAD_HASH_STATE"},
    {static_cast<DWORD>(NTE_NO_KEY), "NTE_NO_KEY"},
    {static_cast<DWORD>(NTE_NO_MEMORY), "NTE_NO_MEMORY"},
    {static_cast<DWORD>(NTE_EXISTS), "NTE_EXISTS"},
    {static_cast<DWORD>(NTE_PERM), "NTE_PERM"},
    {static_cast<DWORD>(NTE_NOT_FOUND), "NTE_NOT_FOUND"},
    {static_cast<DWORD>(NTE_DOUBLE_ENCRYPT), "NTE_DOUBLE_ENCRYPT"},
    {static_cast<DWORD>(NTE_BAD_PROVIDER), "NTE_BAD_PROVIDER"},
    {static_cast<DWORD>(NTE_BAD_PROV_TYPE), "NTE_BAD_PROV_TYPE"},
    {static_cast<DWORD>(NTE_BAD_PUBLIC_KEY), "NTE_BAD_PUBLIC_KEY"},
    {static_cast<DWORD>(NTE_BAD_KEYSET), "NTE_BAD_KEYSET"},
    {static_cast<DWORD>(NTE_PROV_TYPE_NOT_DEF), "NTE_PROV_TYPE_NOT_DEF"},
    {static_cast<DWORD>(NTE_PROV_TYPE_ENTRY_BAD), "NTE_PROV_TYPE_ENTRY_BAD"},
    {static_cast<DWORD>(NTE_KEYSET_NOT_DEF), "NTE_KEYSET_NOT_DEF"},
    {static_cast<DWORD>(NTE_KEYSET_ENTRY_BAD), "NTE_KEYSET_ENTRY_BAD"},
    {static_cast<DWORD>(NTE_PROV_TYPE_NO_MATCH), "NTE_PROV_TYPE_NO_MATCH"},
    {static_cast<DWORD>(NTE_SIGNATURE_FILE_BAD), "NTE_SIGNATURE_FILE_BAD"},
    {static_cast<DWORD>(NTE_PROVIDER_DLL_FAIL), "NTE_PROVIDER_DLL_FAIL"},
    {static_cast<DWORD>(NTE_PROV_DLL_NOT_FOUND), "NTE_PROV_DLL_NOT_FOUND"},
    {static_cast<DWORD>(NTE_BAD_KEYSET_PARAM), "NTE_BAD_KEYSET_PARAM"},
    {static_cast<DWORD>(NTE_FAIL), "NTE_FAIL"},
    {static_cast<DWORD>(NTE_SYS_ERR), "NTE_SYS_ERR"},
    {static_cast<DWORD>(NTE_SILENT_CONTEXT), "NTE_SILENT_CONTEXT"},
    {static_cast<DWORD>(NTE_TOKEN_KEYSET_STORAGE_FULL), "NTE_TOKEN_KEYSET_STORAGE_FULL"},
    {ERROR_FILE_NOT_FOUND, "ERROR_FILE_NOT_FOUND"},
    {ERROR_INVALID_HANDLE, "ERROR_INVALID_HANDLE"},
    {ERROR_NOT_ENOUGH_MEMORY, "ERROR_NOT_ENOUGH_MEMORY"},
    {ERROR_INVALID_PARAMETER, "ERROR_INVALID_PARAMETER"},
    {ERROR_MOD_NOT_FOUND, "ERROR_MOD_NOT_FOUND"},
    {ERROR_PROC_NOT_FOUND, "ERROR_PROC_NOT_FOUND"},
    {ERROR_BUSY, "ERROR_BUSY"},
    {ERROR_MORE_DATA, "ERROR_MORE_DATA"},
    {ERROR_NO_MORE_ITEMS, "ERROR_NO_MORE_ITEMS"},
};

}  // namespace

ERwCryptBadData::ERwCryptBadData()
    : ERwCryptException(
          "Failed to decrypt the data. The data could not be decrypted using the provided key. "
          "(NTE_BAD_DATA)!",
          static_cast<DWORD>(NTE_BAD_DATA)) {}

std::string CryptErrorName(DWORD code) {
    for (const TNamedCode& named : kNamedCodes) {
        if (named.code == code) {
            return named.name;
        }
    }
    char digits[2 + 8 + 1];
    std::snprintf(digits, sizeof digits, "0x%08lX", code);
    return digits;
}

void RaiseCryptError(const char* function, DWORD code) {
    throw ERwCryptException(std::string("The following error was raised while trying to execute ") +
                                function + "\r\n" + CryptErrorName(code),
                            code);
}
