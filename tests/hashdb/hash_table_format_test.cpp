#include "hashdb/hash_table_format.h"

#include <gmock/gmock.h>

#include "support/damage.h"
#include "support/problem_in.h"

namespace {

using namespace std::string_literals;

// Laid out by hand: signature, 1.91, two fields, then size, type, name length and name of each.
const std::string kHeader = "Ver"s + "\x8F\xC2\xF5\x28\x5C\x8F\xFE\x3F"s + "\x02\0\0\0"s +
                            "\x40\0\0\0\x01\0\x05\0"s + "HASH\0"s + "\x08\0\0\0\x0B\0\x06\0"s + "Datum\0"s;
// 1 January 2000 12:00 is the double 63082411200000.
const std::string kNoon2000 = "\x01"s + "\0\0\x07\x5B\xC2\xAF\xCC\x42"s;
const std::string kNoDatum = "\0"s + "\0\0\0\0\0\0\0\0"s;

std::string Text(const std::string& text) {
    return "\x01"s + static_cast<char>(text.size()) + "\0\0\0"s + text;
}
std::string Hash(char digit) {
    return Text(std::string(62, digit) + "0F");
}
TPathDigest Digest(char digit) {
    return *FromPathHashText(std::string(62, digit) + "0F");
}

std::string Written(const THashStore& store, bool sorted) {
    std::string bytes;
    EXPECT_TRUE(WriteHashRecords(store, sorted, [&bytes](std::string_view piece) {
        bytes += piece;
        return true;
    }));
    return bytes;
}

std::string Rewritten(const std::string& bytes, bool sorted) {
    return Written(ReadHashRecords(bytes), sorted);
}

TEST(HashTableFormat, WritesAndReadsTheDocumentedBytes) {
    EXPECT_EQ(kHeader.size(), 42u);
    EXPECT_EQ(Written(THashStore(), true), kHeader);
    EXPECT_EQ(ReadHashRecords(kHeader).RecordCount(), 0u);

    const TDateTime noon = ToDateTime({2000, 1, 1, 12, 0, 0, 0});
    THashStore store;
    store.Append(Digest('B'), noon);
    store.Append(Digest('3'), noon);
    const std::string unsorted = kHeader + Hash('B') + kNoon2000 + Hash('3') + kNoon2000;
    const std::string sorted = kHeader + Hash('3') + kNoon2000 + Hash('B') + kNoon2000;
    EXPECT_EQ(unsorted.size(), 42u + 2 * 78u);
    EXPECT_EQ(Written(store, false), unsorted);
    EXPECT_EQ(Written(store, true), sorted);
    for (const std::string& bytes : {unsorted, sorted}) {
        const THashStore read = ReadHashRecords(bytes);
        EXPECT_EQ(read.RecordCount(), 2u);
        EXPECT_EQ(read.Find(Digest('B')), noon);
        EXPECT_EQ(read.Find(Digest('3')), noon);
        EXPECT_EQ(Rewritten(bytes, false), bytes);
    }
}

TEST(HashTableFormat, SortsLateRecordsInBetweenAndKeepsTheOrderOfEqualOnes) {
    THashStore store = ReadHashRecords(kHeader + Hash('2') + kNoon2000 + Hash('4') + kNoDatum);
    store.Append(Digest('5'), TDateTime{});
    store.Append(Digest('4'), ToDateTime({2000, 1, 1, 12, 0, 0, 0}));
    store.Record(Digest('1'), ToDateTime({2000, 1, 1, 12, 0, 0, 0}));
    store.Append(Digest('2'), kNoDate);
    const std::string dayZero = "\x01"s + "\0\0\x2C\x84\x5D\x40\xCB\x42"s;
    const std::string bytes = kHeader + Hash('1') + kNoon2000 + Hash('2') + kNoon2000 + Hash('2') + kNoDatum +
                              Hash('4') + kNoDatum + Hash('4') + kNoon2000 + Hash('5') + dayZero;
    EXPECT_EQ(Written(store, true), bytes);
    EXPECT_EQ(store.Find(Digest('4')), TDateTime{}) << "a date without a value counts as 0";
}

TEST(HashTableFormat, KeepsRecordsThatAreNotOurs) {
    const std::string lowerCase = Text(std::string(62, 'b') + "0f") + kNoon2000;
    const std::string noHash = "\0"s + kNoon2000;
    const std::string shortText = Text("4711") + "\0\1\2\3\4\5\6\7\x08"s;
    const std::string empty = Text("") + kNoDatum;
    const std::string chinese = Text("\0\xE4\xB8\xAD"s) + kNoDatum;
    const std::string plain = Hash('4') + kNoDatum;
    const std::string last = Hash('9') + kNoon2000;

    const std::string bytes = kHeader + lowerCase + last + noHash + shortText + empty + plain + chinese;
    EXPECT_EQ(Rewritten(bytes, false), bytes);
    const std::string sorted = kHeader + noHash + empty + chinese + plain + shortText + last + lowerCase;
    EXPECT_EQ(Rewritten(bytes, true), sorted);
    EXPECT_EQ(Rewritten(sorted, true), sorted);
    const THashStore store = ReadHashRecords(bytes);
    EXPECT_EQ(store.RecordCount(), 7u);
    EXPECT_EQ(store.Find(*FromPathHashText(std::string(62, 'B') + "0F")), std::nullopt);
}

TEST(HashTableFormat, WritesInPiecesAndStopsWhenTheSinkDoes) {
    THashStore store;
    for (std::uint8_t number = 0; number < 250; ++number) {
        for (std::uint8_t second = 0; second < 120; ++second) {
            TPathDigest digest;
            digest.bytes[5] = number;
            digest.bytes[6] = second;
            store.Append(digest, TDateTime{});
        }
    }
    std::size_t pieces = 0;
    std::size_t size = 0;
    const THashRecordSink count = [&pieces, &size](std::string_view piece) {
        ++pieces;
        size += piece.size();
        return true;
    };
    EXPECT_TRUE(WriteHashRecords(store, true, count));
    EXPECT_EQ(size, 42u + 78u * 30000);
    EXPECT_EQ(pieces, 3u);
    pieces = 0;
    EXPECT_FALSE(WriteHashRecords(store, true, [&pieces](std::string_view) { return ++pieces < 2; }));
    EXPECT_EQ(pieces, 2u);
}

TProblemKind ReasonAgainst(const std::string& bytes) {
    return ProblemIn([&] { (void)ReadHashRecords(bytes); }).what;
}

TEST(HashTableFormat, RefusesWhatNoTableHolds) {
    EXPECT_EQ(ReasonAgainst("MZ"), TProblemKind::NoTableFile);
    EXPECT_EQ(ReasonAgainst(kHeader + Text(std::string(65, 'A')) + kNoDatum), TProblemKind::TableDamaged);
    EXPECT_EQ(ReasonAgainst(kHeader + Text("\0\xE4"s) + kNoDatum), TProblemKind::TableDamaged);
    EXPECT_EQ(ReasonAgainst(kHeader + "\x02"s + kNoDatum), TProblemKind::TableDamaged);
    EXPECT_EQ(ReasonAgainst(kHeader + Hash('A') + "\x01\0\0\0\0\0\0\xF0\x7F"s), TProblemKind::TableDamaged);
    EXPECT_EQ(ReasonAgainst(kHeader + "\x01\xFF\xFF\xFF\xFF"s + kNoDatum), TProblemKind::TableDamaged);
}

// What is read from a damaged file must at least be records that are written and read again.
TEST(HashTableFormat, SurvivesDamageOfEveryByte) {
    const std::string good =
        kHeader + Hash('B') + kNoon2000 + "\0"s + kNoon2000 + Hash('3') + kNoDatum + Text("4711") + kNoon2000;
    std::size_t refused = 0;
    ForEachDamage(good, [&refused](const std::string& damaged) {
        try {
            const std::string bytes = Rewritten(damaged, true);
            EXPECT_EQ(Rewritten(bytes, true), bytes);
            EXPECT_EQ(bytes.size(), damaged.size());
        } catch (const EProblem&) {
            ++refused;
        }
    });
    EXPECT_GT(refused, good.size());
}

}  // namespace
