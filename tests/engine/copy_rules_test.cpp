// The rules of a run that ask no file system: which files, where to, and how sizes read.
#include <gtest/gtest.h>

#include <algorithm>
#include <cwctype>

#include "engine/extension_filter.h"
#include "engine/file_size_text.h"
#include "hashdb/destination_folder.h"

namespace {

std::wstring TestUpperCase(std::wstring_view text) {
    std::wstring upper(text);
    std::ranges::transform(upper, upper.begin(), [](wchar_t letter) {
        return static_cast<wchar_t>(std::towupper(static_cast<wint_t>(letter)));
    });
    return upper;
}

bool Passes(const wchar_t* extensions, const wchar_t* mode, const wchar_t* name) {
    return TExtensionFilter(extensions, ParseExtensionMode(mode), &TestUpperCase).Passes(name);
}

TEST(ExtensionFilter, CommaText) {
    using TItems = std::vector<std::wstring>;
    EXPECT_EQ(ParseCommaText(L""), TItems{});
    EXPECT_EQ(ParseCommaText(L"  .jpg ,\t.png\r\n.gif "), (TItems{L".jpg", L".png", L".gif"}));
    EXPECT_EQ(ParseCommaText(L"\"a, b\",\"say \"\"x\"\"\""), (TItems{L"a, b", L"say \"x\""}));
    EXPECT_EQ(ParseCommaText(L".jpg,"), (TItems{L".jpg", L""}));
    EXPECT_EQ(ParseCommaText(L",.jpg"), (TItems{L"", L".jpg"}));
    EXPECT_EQ(ParseCommaText(L"\"unfinished"), TItems{L"unfinished"});
}

TEST(ExtensionFilter, ModesAndCase) {
    EXPECT_TRUE(Passes(L".jpg, .png", L"in", L"x.JPG"));
    EXPECT_TRUE(Passes(L".jpg, .png", L"IN", L"y.png"));
    EXPECT_FALSE(Passes(L".jpg, .png", L"IN", L"z.gif"));
    EXPECT_FALSE(Passes(L".jpg", L"EX", L"x.Jpg"));
    EXPECT_TRUE(Passes(L".jpg", L"EX", L"x"));
    EXPECT_TRUE(Passes(L".jpg", L"NO", L"z.gif"));
    EXPECT_TRUE(Passes(L".gz", L"IN", L"archive.tar.gz"));
    EXPECT_FALSE(Passes(L".tar", L"IN", L"archive.tar.gz"));
    // An item without its dot matches nothing; an empty item matches names without an extension.
    EXPECT_FALSE(Passes(L"jpg", L"IN", L"x.jpg"));
    EXPECT_FALSE(Passes(L".jpg", L"IN", L"README"));
    EXPECT_TRUE(Passes(L".jpg,", L"IN", L"README"));
    EXPECT_FALSE(Passes(L"", L"IN", L"x.jpg"));
    EXPECT_TRUE(Passes(L".", L"IN", L"ends with a dot."));
}

TEST(DestinationFolder, DrivesAndShares) {
    EXPECT_EQ(DestinationFolder(L"N:", L"PC1", L"C:\\Daten\\Brief.doc"), L"N:\\PC1\\drive_C\\Daten\\");
    EXPECT_EQ(DestinationFolder(L"N:", L"PC1", L"d:\\x.txt"), L"N:\\PC1\\drive_d\\");
    EXPECT_EQ(DestinationFolder(L"\\\\NAS\\BACKUP", L"PC1", L"\\\\srv\\pub\\a\\b.txt"),
              L"\\\\NAS\\BACKUP\\PC1\\drive_srv\\pub\\a\\");
    EXPECT_EQ(DestinationFolder(L"N:", L"PC1", L"folder\\b.txt"), L"N:\\PC1\\drive_folder\\");
}

TEST(FileSizeText, UnitsAndThresholds) {
    const auto text = [](double bytes) { return FileSizeText(bytes, L","); };
    constexpr double kKilo = 1024;
    EXPECT_EQ(text(0), L"0 B");
    EXPECT_EQ(text(999), L"999 B");
    EXPECT_EQ(text(1000), L"1,0 KB");
    EXPECT_EQ(text(1280), L"1,3 KB") << "half a tenth is rounded up";
    EXPECT_EQ(text(999 * kKilo), L"999,0 KB");
    EXPECT_EQ(text(1000 * kKilo), L"0,98 MB");
    EXPECT_EQ(text(2.5 * kKilo * kKilo), L"2,50 MB");
    EXPECT_EQ(text(1000 * kKilo * kKilo), L"0,98 GB");
    EXPECT_EQ(text(1023 * kKilo * kKilo * kKilo * kKilo), L"1023,00 TB");
    EXPECT_EQ(text(kKilo * kKilo * kKilo * kKilo * kKilo), L"");
    EXPECT_EQ(FileSizeText(1536, L"."), L"1.5 KB");
}

}  // namespace
