#include "app/status_list_model.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "texts/run_texts.h"

namespace {

TEST(StatusListModel, KeepsTheNewestOnTopAndEveryTextWhole) {
    TStatusListModel model;
    const std::wstring longText(200'000, L'ä');
    model.InsertAtTop(L"first", kInfoStatus);
    model.InsertAtTop(longText, std::nullopt);
    model.InsertAtTop(std::wstring(L"lone surrogate ") + static_cast<wchar_t>(0xD800), kErrorStatus);
    model.InsertAtTop(L"", 7);
    ASSERT_EQ(model.RowCount(), 4U);
    EXPECT_EQ(model.Text(0), L"");
    EXPECT_EQ(model.Text(2), longText);
    EXPECT_EQ(model.Text(3), L"first");
    EXPECT_EQ(model.Status(0), 7);
    EXPECT_EQ(model.Status(2), std::nullopt);
    EXPECT_EQ(model.TextOfRows(std::vector<std::size_t>{0, 3}), L"\r\nfirst\r\n");

    const unsigned generation = model.Generation();
    model.Clear();
    EXPECT_NE(model.Generation(), generation);
    model.InsertAtTop(L"after", kFileNameStatus);
    EXPECT_EQ(model.RowCount(), 1U);
    EXPECT_EQ(model.Text(0), L"after");
}

TEST(StatusListModel, KeepsReasonsBesideTheTexts) {
    TStatusListModel model;
    model.InsertAtTop(L"a.txt", kErrorStatus, L"voll");
    model.InsertAtTop(L"copied", kFileNameStatus);
    model.InsertAtTop(L"b.txt", kErrorStatus, L"voll");
    model.InsertAtTop(L"c.txt", kErrorStatus, L"in\r\nBenutzung");
    EXPECT_EQ(model.Text(0), L"c.txt");
    EXPECT_EQ(model.TextOfRows(std::vector<std::size_t>{0, 1, 2, 3}),
              L"c.txt\tin Benutzung\r\nb.txt\tvoll\r\ncopied\r\na.txt\tvoll\r\n");
    model.Clear();
    model.InsertAtTop(L"after", kErrorStatus);
    EXPECT_EQ(model.Reason(0), L"");
}

TEST(StatusListModel, SharesANarrowRowBetweenTextAndReason) {
    const auto shares = [](int width, int text, int reason) {
        const TRowShares shared = ShareRow(width, 10, text, reason);
        return std::pair(shared.text, shared.reason);
    };
    EXPECT_EQ(shares(1000, 300, 500), std::pair(300, 500));
    EXPECT_EQ(shares(1000, 600, 500), std::pair(600, 390)) << "the reason gives way down to 35 %";
    EXPECT_EQ(shares(1000, 900, 500), std::pair(640, 350));
    EXPECT_EQ(shares(1000, 900, 200), std::pair(790, 200)) << "a short reason is whole";
    EXPECT_EQ(ShareRow(1000, 0, 2000, 0).text, 1000);
    EXPECT_GE(shares(5, 100, 100).first, 0);
}

TEST(StatusListModel, HoldsAMillionPathsOfHundredLettersInFewBytesEach) {
    constexpr std::size_t kRows = 1'000'000;
    TStatusListModel model;
    std::wstring path(100, L'x');
    for (std::size_t row = 0; row < kRows; ++row) {
        path[row % 90] = static_cast<wchar_t>(L'a' + row % 26);
        model.InsertAtTop(path, kFileNameStatus);
    }
    EXPECT_LE(model.BytesHeld() / kRows, 400U);
    EXPECT_EQ(model.Text(0), path);
}

TEST(RunTexts, TellsTheTimeTakenWithTwoDecimals) {
    EXPECT_EQ(TimeTakenText(0.004, L","), L"Das Backup benötigte 0,00 min");
    EXPECT_EQ(TimeTakenText(1.096, L","), L"Das Backup benötigte 1,10 min");
    EXPECT_EQ(TimeTakenText(71582.788, L"."), L"Das Backup benötigte 71582.79 min");
}

TEST(StatusListModel, FindsTheNearestError) {
    TStatusListModel model;
    EXPECT_FALSE(model.ErrorBelow(-1));
    for (int row = 0; row < 10; ++row) {
        model.InsertAtTop(L"row", row == 2 || row == 7 ? kErrorStatus : kFileNameStatus);
    }
    // The newest is row 0, so that these are rows 7 and 2.
    EXPECT_EQ(model.ErrorBelow(-1), 2U);
    EXPECT_EQ(model.ErrorBelow(2), 7U);
    EXPECT_EQ(model.ErrorBelow(7), std::nullopt);
    EXPECT_EQ(model.ErrorBelow(9), std::nullopt);
    EXPECT_EQ(model.ErrorAbove(9), 7U);
    EXPECT_EQ(model.ErrorAbove(7), 2U);
    EXPECT_EQ(model.ErrorAbove(2), std::nullopt);
    model.Clear();
    EXPECT_FALSE(model.HasErrors());
}

TEST(StatusListModel, AHintHoldsAllOfALongPathInShortLines) {
    const std::wstring folder(70, L'x');
    const std::wstring path = L"C:\\" + folder + L"\\" + folder + L"\\" + std::wstring(150, L'y');
    const std::wstring hint = HintOfRow(path, L"why");
    EXPECT_EQ(hint, L"C:\\" + folder + L"\\\r\n" + folder + L"\\\r\n" + std::wstring(100, L'y') + L"\r\n" +
                        std::wstring(50, L'y') + L"\r\nwhy");
    EXPECT_TRUE(IsPathRow(path));
    EXPECT_TRUE(IsPathRow(L"\\\\srv\\a"));
    EXPECT_FALSE(IsPathRow(L"Start: 1.1.2026"));
}

}  // namespace
