#include "store/source_folder_format.h"

#include <gmock/gmock.h>

#include "support/damage.h"
#include "support/latin1_code_page.h"
#include "support/problem_in.h"

namespace {

using namespace std::string_literals;

const TLatin1CodePage codePage;

// Laid out by hand: signature, 1.91, seven fields, then size, type, name length and name of each.
const std::string kHeader =
    "Ver"s + "\x8F\xC2\xF5\x28\x5C\x8F\xFE\x3F"s + "\x07\0\0\0"s + "\x02\0\0\0\x05\0\x07\0"s + "Aktive\0"s +
    "\xFF\0\0\0\x01\0\x0A\0"s + "Directory\0"s + "\x02\0\0\0\x05\0\x09\0"s + "Rekursiv\0"s +
    "\xFF\0\0\0\x01\0\x0B\0"s + "Extensions\0"s + "\x05\0\0\0\x01\0\x0E\0"s + "ExtensionMode\0"s +
    "\x02\0\0\0\x05\0\x08\0"s + "History\0"s + "\x02\0\0\0\x05\0\x07\0"s + "Hidden\0"s;
const std::string kFirstRow = "\x01\x01\0"s + "\x01\x07\0\0\0C:\\M\xE4rz"s + "\x01\0\0"s +
                              "\x01\x04\0\0\0.pdf"s + "\x01\x02\0\0\0IN"s + "\x01\0\0"s + "\x01\x01\0"s;
const std::string kRowWithoutValues = "\0\0\0"s + "\0"s + "\0\0\0"s + "\0"s + "\0"s + "\0\0\0"s + "\0\0\0"s;

const SourceFolderRow kRow{true, L"C:\\M\u00E4rz", false, L".pdf", L"IN", false, true};

TEST(SourceFolderFormat, WritesAndReadsTheDocumentedBytes) {
    EXPECT_EQ(WriteSourceFolderRows({}, codePage), kHeader);
    EXPECT_THAT(ReadSourceFolderRows(kHeader, codePage), testing::IsEmpty());

    const std::string bytes = kHeader + kFirstRow + kRowWithoutValues;
    EXPECT_EQ(WriteSourceFolderRows({kRow, {}}, codePage), bytes);
    EXPECT_THAT(ReadSourceFolderRows(bytes, codePage), testing::ElementsAre(kRow, SourceFolderRow{}));
}

TEST(SourceFolderFormat, ReadsWhatOtherWritersMayWrite) {
    // Any word but 0 is true, and the bytes behind a missing value mean nothing.
    const std::string bytes =
        kHeader + "\x01\0\x80"s + "\0"s + "\0\xFF\xFF"s + "\0"s + "\0"s + "\0\x01\0"s + "\x01\x02\0"s;
    SourceFolderRow row;
    row.Aktive = true;
    row.Hidden = true;
    EXPECT_THAT(ReadSourceFolderRows(bytes, codePage), testing::ElementsAre(row));
}

TEST(SourceFolderFormat, KeepsFoldersThatTheCodePageCannotHold) {
    SourceFolderRow row = kRow;
    row.Directory = L"D:\\\u4E2D\u6587";
    EXPECT_THAT(ReadSourceFolderRows(WriteSourceFolderRows({row}, codePage), codePage),
                testing::ElementsAre(row));
}

TProblem ReasonAgainst(const std::string& bytes) {
    return ProblemIn([&] { (void)ReadSourceFolderRows(bytes, codePage); });
}

TEST(SourceFolderFormat, SaysWhatIsWrongWithAFile) {
    EXPECT_EQ(ReasonAgainst("").what, TProblemKind::NoTableFile);
    EXPECT_EQ(ReasonAgainst("[CONFIG]").what, TProblemKind::NoTableFile);
    std::string bytes = kHeader + kFirstRow;
    bytes[3] ^= 1;
    EXPECT_EQ(ReasonAgainst(bytes).what, TProblemKind::OtherTableVersion);
    bytes = kHeader + kFirstRow;
    bytes[11] = 2;
    EXPECT_EQ(ReasonAgainst(bytes).what, TProblemKind::OtherTableFields);
    EXPECT_EQ(ReasonAgainst(kHeader + "\x02"),
              (TProblem{.what = TProblemKind::TableDamaged, .number = 137, .limit = 138}));
    EXPECT_EQ(ReasonAgainst(kHeader + "\x01\x01\0"s + "\x01\xFF\xFF\xFF\xFFx"s),
              (TProblem{.what = TProblemKind::TableDamaged, .number = 141, .limit = 146}));
}

// Whatever is read from a damaged file must at least be rows that can be written and read again.
TEST(SourceFolderFormat, SurvivesDamageOfEveryByte) {
    std::string good = WriteSourceFolderRows({kRow, {}, kRow}, codePage);
    std::size_t refused = 0;
    ForEachDamage(good, [&refused](const std::string& damaged) {
        try {
            const auto rows = ReadSourceFolderRows(damaged, codePage);
            EXPECT_EQ(ReadSourceFolderRows(WriteSourceFolderRows(rows, codePage), codePage), rows);
        } catch (const EProblem&) {
            ++refused;
        }
    });
    EXPECT_GT(refused, good.size());
}

}  // namespace
