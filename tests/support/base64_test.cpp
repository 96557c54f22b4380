#include "support/base64.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string_view>
#include <vector>

namespace {

std::vector<std::uint8_t> BytesOf(std::string_view text) {
    return {text.begin(), text.end()};
}

TEST(Base64, GivesTheKnownTexts) {
    // The test vectors of RFC 4648.
    const std::pair<std::string_view, std::wstring_view> known[] = {
        {"", L""},
        {"f", L"Zg=="},
        {"fo", L"Zm8="},
        {"foo", L"Zm9v"},
        {"foob", L"Zm9vYg=="},
        {"fooba", L"Zm9vYmE="},
        {"foobar", L"Zm9vYmFy"},
    };
    for (const auto& [bytes, text] : known) {
        EXPECT_EQ(Base64Encode(BytesOf(bytes), TBase64Alphabet::Standard), text);
        EXPECT_EQ(Base64Decode(text, TBase64Alphabet::Standard), BytesOf(bytes));
    }
}

TEST(Base64, AlphabetsDifferInTwoDigits) {
    const std::vector<std::uint8_t> bytes = {0xFB, 0xFF, 0xFE};
    EXPECT_EQ(Base64Encode(bytes, TBase64Alphabet::Standard), L"+//+");
    EXPECT_EQ(Base64Encode(bytes, TBase64Alphabet::UrlSafe), L"-__-");
    EXPECT_EQ(Base64Decode(L"-__-", TBase64Alphabet::UrlSafe), bytes);
    EXPECT_FALSE(Base64Decode(L"-__-", TBase64Alphabet::Standard));
    EXPECT_FALSE(Base64Decode(L"+//+", TBase64Alphabet::UrlSafe));
}

TEST(Base64, RoundTripsEveryByteAtEveryPlace) {
    for (unsigned value = 0; value < 256; ++value) {
        for (std::size_t place = 0; place < 5; ++place) {
            std::vector<std::uint8_t> bytes(5, 0xA5);
            bytes[place] = static_cast<std::uint8_t>(value);
            for (const auto alphabet : {TBase64Alphabet::Standard, TBase64Alphabet::UrlSafe}) {
                EXPECT_EQ(Base64Decode(Base64Encode(bytes, alphabet), alphabet), bytes);
            }
        }
    }
}

TEST(Base64, RefusesAnythingElse) {
    for (const std::wstring_view text :
         {L"Z", L"Zg", L"Zg=", L"Zm9vY",              // cut
          L"Zh==", L"Zm9=",                           // bits that stand for nothing
          L"====", L"Z===", L"Zg==Zg==", L"Zm=v",     // padding elsewhere than at the end
          L"Zm9v\r\n", L" Zm9v", L"Zm 9", L"Zm9v  ",  // white space
          L"Zm9\u00E4", L"Zm9\u017F", L"Zm9\uFF21"}) {
        EXPECT_FALSE(Base64Decode(text, TBase64Alphabet::Standard));
    }
}

}  // namespace
