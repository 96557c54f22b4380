#include "ui/grid_text.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;

// Every character is one wide.
int Count(std::wstring_view text) {
    return static_cast<int>(text.size());
}

std::vector<std::wstring> Lines(std::wstring_view text, int width, std::size_t maxLines = 9) {
    return BreakCellText(text, width, maxLines, Count);
}

TEST(GridText, BreaksWherePathsAndListsCanBeParted) {
    EXPECT_THAT(Lines(L"", 5), ElementsAre(L""));
    EXPECT_THAT(Lines(L"kurz", 4), ElementsAre(L"kurz"));
    EXPECT_THAT(Lines(L".pdf,.docx,.jpg", 11), ElementsAre(L".pdf,.docx,", L".jpg"));
    EXPECT_THAT(Lines(L"C:\\Eigene Dateien\\Bilder", 12),
                ElementsAre(L"C:\\Eigene", L"Dateien\\", L"Bilder"));
    EXPECT_THAT(Lines(L"\\\\nas\\archiv", 6), ElementsAre(L"\\\\nas\\", L"archiv"));
    EXPECT_THAT(Lines(L".pdf\r\n.txt\n\n.jpg\n", 9), ElementsAre(L".pdf", L".txt", L"", L".jpg"));
}

TEST(GridText, WhatDoesNotFitEndsInAnEllipsis) {
    EXPECT_THAT(Lines(L"Donaudampfschiff", 6), ElementsAre(L"Donau…"));
    EXPECT_THAT(Lines(L"eins zwei drei vier", 5, 2), ElementsAre(L"eins", L"zwei…"));
    EXPECT_THAT(Lines(L"eins zweit drei", 5, 2), ElementsAre(L"eins", L"zwei…"));
    EXPECT_EQ(CutWithEllipsis(L"abc", 0, Count), L"…");
    EXPECT_EQ(CutWithEllipsis(L"", 0, Count), L"");
    // Half a surrogate pair would be shown as a box.
    EXPECT_EQ(CutWithEllipsis(L"ab\xD83D\xDE00xyz", 4, Count), L"ab…");
}

}  // namespace
