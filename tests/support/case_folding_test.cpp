#include "support/case_folding.h"

#include <gtest/gtest.h>

namespace {

TEST(CaseFolding, FollowsTheFileSystemsRules) {
    EXPECT_EQ(FoldedCase(L"Brief \u00E4\u00F6\u00FC\u00E9\u03C9\u0436.doc"),
              L"BRIEF \u00C4\u00D6\u00DC\u00C9\u03A9\u0416.DOC");
    // One unit for one unit: no "SS" for the sharp s; a dotless i is a letter of its own.
    EXPECT_EQ(FoldedCase(L"stra\u00DFe"), L"STRA\u00DFE");
    EXPECT_EQ(FoldedCase(L"i"), L"I");
    EXPECT_NE(FoldedCase(L"\u0130"), FoldedCase(L"i"));
    EXPECT_EQ(FoldedCase(L""), L"");
}

TEST(CaseFolding, FoldsTwiceToTheSameAndKeepsSurrogates) {
    for (unsigned unit = 0; unit < 0x10000; ++unit) {
        const auto letter = static_cast<wchar_t>(unit);
        const wchar_t upper = UpperCaseOf(letter);
        ASSERT_EQ(UpperCaseOf(upper), upper) << unit;
        if (unit >= 0xD800 && unit < 0xE000) {
            ASSERT_EQ(upper, letter) << unit;
        }
    }
}

TEST(CaseFolding, NameKeyDoesNotTellAccentsApart) {
    EXPECT_EQ(NameKey(L"a\u0308rger.txt"), L"\u00C4RGER.TXT");
    EXPECT_EQ(NameKey(L"\u00E4rger.txt"), L"\u00C4RGER.TXT");
    EXPECT_EQ(NameKey(L"brief.doc"), L"BRIEF.DOC");
    EXPECT_EQ(NameKey(L"half \xD83D"), L"HALF \xD83D");
    EXPECT_EQ(NameKey(L""), L"");
}

TEST(CaseFolding, UsersLanguageKeepsTheLength) {
    EXPECT_EQ(LocaleUpperCase(L"\\\\nas\\B\u00E4ckup"), L"\\\\NAS\\B\u00C4CKUP");
    EXPECT_EQ(LocaleUpperCase(L"stra\u00DFe \U0001F600"), L"STRA\u00DFE \U0001F600");
    EXPECT_EQ(LocaleUpperCase(L""), L"");
}

}  // namespace
