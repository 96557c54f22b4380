#include "support/text.h"

#include <gtest/gtest.h>

namespace {

TEST(Utf8, WritesEachLength) {
    EXPECT_EQ(ToUtf8(L"a\u00E4\u20AC\U0001F600"), "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80");
    EXPECT_EQ(ToUtf8(std::wstring_view(L"\0x", 2)), std::string_view("\0x", 2));
    EXPECT_EQ(ToUtf8(L"\x7F\u0080\u07FF\u0800\uFFFF\U00010000\U0010FFFF"),
              "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF");
}

TEST(Utf8, EveryUnitComesBack) {
    // With its neighbours, so that surrogates stand alone, the wrong way round, and before plain letters.
    for (unsigned unit = 0; unit < 0x10000; ++unit) {
        const auto letter = static_cast<wchar_t>(unit);
        for (const std::wstring& text :
             {std::wstring{letter}, std::wstring{letter, L'x'}, std::wstring{letter, wchar_t(0xD83D)},
              std::wstring{wchar_t(0xDE00), letter}}) {
            ASSERT_EQ(FromUtf8(ToUtf8(text)), text) << unit;
        }
    }
}

TEST(Utf8, PairedSurrogatesAreOneCharacter) {
    const std::wstring pair = {wchar_t(0xD83D), wchar_t(0xDE00)};
    EXPECT_EQ(ToUtf8(pair), "\xF0\x9F\x98\x80");
    EXPECT_EQ(ToUtf8(pair.substr(0, 1)), "\xED\xA0\xBD");
}

TEST(Utf8, RefusesOtherBytes) {
    for (const std::string_view bytes : {"\x80",
                                         "a\xBF",
                                         "\xFE",
                                         "\xFF",
                                         "\xF8\x88\x80\x80\x80",  // no first byte
                                         "\xC3",
                                         "\xE2\x82",
                                         "\xF0\x9F\x98",
                                         "a\xC3",  // cut
                                         "\xC3x",
                                         "\xE2\x82x",
                                         "\xE2x\xAC",
                                         "\xC3\xC3\xA4",  // interrupted
                                         "\xC0\x80",
                                         "\xC1\xBF",
                                         "\xE0\x9F\xBF",
                                         "\xF0\x8F\xBF\xBF",  // overlong
                                         "\xF4\x90\x80\x80",
                                         "\xF7\xBF\xBF\xBF",             // above U+10FFFF
                                         "\xED\xA0\xBD\xED\xB8\x80"}) {  // a pair in two pieces
        EXPECT_FALSE(FromUtf8(bytes)) << testing::PrintToString(bytes);
    }
}

TEST(Utf8, LossyReadingReplacesEachInvalidByte) {
    EXPECT_EQ(FromUtf8Lossy("a\xC3\xA4z"), L"a\u00E4z");
    EXPECT_EQ(FromUtf8Lossy("a\xE2\x82z\xFF"), L"a\uFFFD\uFFFDz\uFFFD");
    EXPECT_EQ(FromUtf8Lossy(""), L"");
}

TEST(Text, AsciiCaseLeavesOtherLettersAlone) {
    EXPECT_EQ(AsciiUpperCase(L"az\u00E4\u0131@`{"), L"AZ\u00E4\u0131@`{");
    EXPECT_TRUE(EqualsIgnoringAsciiCase(L"/Copy", L"/cOPY"));
    EXPECT_FALSE(EqualsIgnoringAsciiCase(L"/Copy", L"/Copy "));
    EXPECT_FALSE(EqualsIgnoringAsciiCase(L"\u00C4", L"\u00E4"));
    EXPECT_FALSE(EqualsIgnoringAsciiCase(L"@", L"`"));
}

TEST(Text, WhiteSpaceAroundGoes) {
    EXPECT_EQ(TrimWhiteSpace(L" \t\r\n a b\u00A0\r\n"), L"a b\u00A0");
    EXPECT_EQ(TrimWhiteSpace(L" \t"), L"");
    EXPECT_EQ(TrimWhiteSpace(L""), L"");
}

}  // namespace
