#include "support/typed_folder.h"

#include <gtest/gtest.h>

namespace {

TEST(TypedFolder, IsReadAsMeant) {
    const struct {
        std::wstring_view typed, meant;
    } cases[] = {
        // The first two are what everybody has: the table's hashes hang on their text.
        {L"C:\\Users\\Petra\\Eigene Dateien", L"C:\\Users\\Petra\\Eigene Dateien"},
        {L"\\\\Srv\\pub\\Ä .d", L"\\\\Srv\\pub\\Ä .d"},
        {L"d:", L"d:"},
        {L"d:\\", L"d:"},
        {L"D:\\Daten\\\\", L"D:\\Daten"},
        {L"\t D:\\Daten \r\n", L"D:\\Daten"},
        {L" \" D:\\Eigene Daten \" ", L"D:\\Eigene Daten"},
        {L"\"D:\\Daten", L"D:\\Daten"},
        {L"D:/Daten/x/", L"D:\\Daten\\x"},
        {L"D:\\a\\.\\b\\..\\\\c", L"D:\\a\\c"},
        {L"D:\\..\\..\\x", L"D:\\x"},
        {L"\\\\?\\D:\\Daten", L"D:\\Daten"},
        {L"//?/D:/Daten", L"D:\\Daten"},
        {L"\\\\?\\unc\\srv\\pub\\x", L"\\\\srv\\pub\\x"},
        {L"//srv/pub", L"\\\\srv\\pub"},
        {L"\\\\srv\\pub\\\\x\\", L"\\\\srv\\pub\\x"},
    };
    for (const auto& [typed, meant] : cases) {
        EXPECT_EQ(FolderAsMeant(typed), meant);
    }
}

TEST(TypedFolder, WhatIsNoAbsolutePathIsNone) {
    for (const std::wstring_view typed :
         {L"", L" ", L"\"\"", L"Daten", L"..\\Daten", L"\\Daten", L"D:Daten", L"1:\\x", L"\\\\srv",
          L"\\\\srv\\", L"\\\\?\\Volume{0123}\\x", L"\\\\.\\PhysicalDrive0", L"%USERPROFILE%\\x"}) {
        EXPECT_EQ(FolderAsMeant(typed), L"");
    }
}

}  // namespace
