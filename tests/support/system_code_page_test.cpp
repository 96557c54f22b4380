#include "support/system_code_page.h"

#include <gtest/gtest.h>

namespace {

TEST(SystemCodePage, HoldsOnlyWhatComesBack) {
    const TSystemCodePage codePage;
    EXPECT_EQ(codePage.Encode(L"C:\\abc"), "C:\\abc");
    EXPECT_EQ(codePage.Encode(L""), "");
    // In a page of the west the first has no byte and the second would become a look-alike.
    for (const wchar_t* text : {L"\u4E2D", L"\u221E", L"\xD800"}) {
        if (const auto bytes = codePage.Encode(text)) {
            EXPECT_EQ(codePage.Decode(*bytes), text);
        }
    }
}

}  // namespace
