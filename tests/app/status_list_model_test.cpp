#include "app/status_list_model.h"

#include <gtest/gtest.h>

#include <vector>

#include "app/run_texts.h"

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

TEST(StatusListModel, PaintsUnknownAndMissingStatusAsFileNames) {
    EXPECT_EQ(&StyleOfStatus(kInfoStatus), &InfoStyle);
    EXPECT_EQ(&StyleOfStatus(kErrorStatus), &ErrorStyle);
    EXPECT_EQ(&StyleOfStatus(kIgnoreStatus), &IgnoreStyle);
    for (const std::optional<int> status :
         {std::optional<int>(0), std::optional<int>(), std::optional<int>(-2), std::optional<int>(3),
          std::optional<int>(65535)}) {
        EXPECT_EQ(&StyleOfStatus(status), &FileNameStyle);
    }
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

}  // namespace
