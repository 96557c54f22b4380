#include "support/path_text.h"

#include <gtest/gtest.h>

namespace {

TEST(PathText, OneTrailingSeparatorGoes) {
    EXPECT_EQ(RemoveTrailingSeparator(L""), L"");
    EXPECT_EQ(RemoveTrailingSeparator(L"\\"), L"");
    EXPECT_EQ(RemoveTrailingSeparator(L"D:\\Daten"), L"D:\\Daten");
    EXPECT_EQ(RemoveTrailingSeparator(L"D:\\Daten\\\\"), L"D:\\Daten\\");
    EXPECT_EQ(RemoveTrailingSeparator(L"D:/Daten/"), L"D:/Daten/");
}

TEST(PathText, DrivePartIsADriveOrAShare) {
    EXPECT_EQ(DrivePart(L"c:\\Daten\\a.txt"), L"c:");
    EXPECT_EQ(DrivePart(L"C:"), L"C:");
    EXPECT_EQ(DrivePart(L"\\\\srv\\pub\\a\\b.txt"), L"\\\\srv\\pub");
    EXPECT_EQ(DrivePart(L"\\\\srv\\pub"), L"\\\\srv\\pub");
    EXPECT_EQ(DrivePart(L"\\\\srv"), L"");
    EXPECT_EQ(DrivePart(L"\\\\\\pub"), L"");
    EXPECT_EQ(DrivePart(L"\\Daten"), L"");
    EXPECT_EQ(DrivePart(L"Daten"), L"");
    EXPECT_EQ(DrivePart(L""), L"");
}

TEST(PathText, FolderNameAndExtensionMakeUpThePath) {
    const struct {
        std::wstring_view path, folder, name, extension;
    } cases[] = {
        {L"C:\\Daten\\a.b.txt", L"C:\\Daten\\", L"a.b.txt", L".txt"},
        {L"C:\\Daten.alt\\data", L"C:\\Daten.alt\\", L"data", L""},
        {L"C:a.txt", L"C:", L"a.txt", L".txt"},
        {L"C:\\", L"C:\\", L"", L""},
        {L".profile", L"", L".profile", L".profile"},
        {L"C:\\ends with dot.", L"C:\\", L"ends with dot.", L"."},
        {L"", L"", L"", L""},
    };
    for (const auto& [path, folder, name, extension] : cases) {
        EXPECT_EQ(FolderPart(path), folder);
        EXPECT_EQ(FileNamePart(path), name);
        EXPECT_EQ(ExtensionPart(path), extension);
    }
}

TEST(PathText, NumberStandsBeforeTheLastExtension) {
    EXPECT_EQ(NumberedName(L"C:\\x\\report.txt", 1), L"C:\\x\\report #001.txt");
    EXPECT_EQ(NumberedName(L"C:\\x\\a.b.txt", 42), L"C:\\x\\a.b #042.txt");
    EXPECT_EQ(NumberedName(L"C:\\x.y\\data", 999), L"C:\\x.y\\data #999");
    EXPECT_EQ(NumberedName(L"data", 1000), L"data #1000");
    EXPECT_EQ(NumberedName(L".profile", 7), L" #007.profile");
}

TEST(PathText, NumberedNamesAreRecognised) {
    for (const std::wstring_view name : {L"report.txt", L"data", L".profile", L"a.b.txt", L"a #001.txt"}) {
        EXPECT_FALSE(IsNumberedName(name) && !name.starts_with(L"a #"));
        EXPECT_TRUE(IsNumberedName(NumberedName(name, 7)));
        EXPECT_TRUE(IsNumberedName(NumberedName(name, 1000)));
    }
    for (const std::wstring_view name :
         {L"", L"a #01.txt", L"a#001.txt", L"a 001.txt", L"a #001 b.txt", L"a #"}) {
        EXPECT_FALSE(IsNumberedName(name));
    }
}

TEST(PathText, ExtendedFormOfDrives) {
    EXPECT_EQ(ExtendedPath(L"C:\\Daten\\a.txt"), L"\\\\?\\C:\\Daten\\a.txt");
    EXPECT_EQ(ExtendedPath(L"D:"), L"\\\\?\\D:\\");
    EXPECT_EQ(ExtendedPath(L"D:\\"), L"\\\\?\\D:\\");
    EXPECT_EQ(ExtendedPath(L"D:\\x\\"), L"\\\\?\\D:\\x");
    EXPECT_EQ(ExtendedPath(L"D:/x/../y"), L"\\\\?\\D:\\y");
    EXPECT_EQ(ExtendedPath(L"D:\\\\x\\\\\\y"), L"\\\\?\\D:\\x\\y");
    EXPECT_EQ(ExtendedPath(L"D:\\.\\x\\.\\y\\."), L"\\\\?\\D:\\x\\y");
    EXPECT_EQ(ExtendedPath(L"D:\\..\\..\\x"), L"\\\\?\\D:\\x");
    // Only these two names mean something; others may begin and end with dots.
    EXPECT_EQ(ExtendedPath(L"D:\\...\\.x\\..y\\z."), L"\\\\?\\D:\\...\\.x\\..y\\z.");
}

TEST(PathText, ExtendedFormOfShares) {
    EXPECT_EQ(ExtendedPath(L"\\\\srv\\pub\\a.txt"), L"\\\\?\\UNC\\srv\\pub\\a.txt");
    EXPECT_EQ(ExtendedPath(L"//srv/pub/a.txt"), L"\\\\?\\UNC\\srv\\pub\\a.txt");
    EXPECT_EQ(ExtendedPath(L"\\\\srv\\pub\\"), L"\\\\?\\UNC\\srv\\pub");
    EXPECT_EQ(ExtendedPath(L"\\\\srv\\share\\..\\.."), L"\\\\?\\UNC\\srv\\share");
    EXPECT_EQ(ExtendedPath(L"\\\\srv\\share\\a\\..\\..\\b"), L"\\\\?\\UNC\\srv\\share\\b");
}

TEST(PathText, ExtendedFormLeavesTheRestAlone) {
    for (const std::wstring_view path :
         {L"", L"a.txt", L"..\\a.txt", L"\\Daten", L"D:a.txt", L"\\\\?\\D:\\x\\..\\y",
          L"\\\\?\\UNC\\srv\\pub", L"\\\\.\\PhysicalDrive0", L"1:\\x", L"\u00C4:\\x"}) {
        EXPECT_EQ(ExtendedPath(path), path);
    }
}

}  // namespace
