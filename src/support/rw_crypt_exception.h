// What the cryptographic routines throw.
#pragma once

#include <windows.h>

#include <stdexcept>
#include <string>

// A cryptographic operation that was refused or failed. The message is English; Code() is the system's error
// code, 0 when the refusal is the program's own and has none.
class ERwCryptException : public std::runtime_error {
public:
    explicit ERwCryptException(const std::string& message, DWORD code = 0)
        : std::runtime_error(message), code_(code) {}

    DWORD Code() const { return code_; }

private:
    DWORD code_;
};

// Data that the key does not decrypt (NTE_BAD_DATA): damaged, or encrypted under another key.
class ERwCryptBadData : public ERwCryptException {
public:
    ERwCryptBadData();
};

// The symbolic name of a code of the cryptographic interface, such as "NTE_BAD_KEY"; "0x" and eight
// hexadecimal digits for a code without one.
std::string CryptErrorName(DWORD code);

// Throws the exception for a function of the system that failed with the code.
[[noreturn]] void RaiseCryptError(const char* function, DWORD code);
