// The protected texts of the settings file: what decodes is written the same way again.
#include "fuzz_input.h"
#include "support/base64.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::wstring text = AsText(data, size);
    for (const TBase64Alphabet alphabet : {TBase64Alphabet::Standard, TBase64Alphabet::UrlSafe}) {
        if (const auto bytes = Base64Decode(text, alphabet)) {
            Require(Base64Encode(*bytes, alphabet) == text);
        }
        const auto again = Base64Decode(Base64Encode({data, size}, alphabet), alphabet);
        Require(again && std::equal(again->begin(), again->end(), data, data + size));
    }
    return 0;
}
