#include "hashdb/hash_table.h"

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <map>
#include <random>
#include <thread>

#include "hashdb/hash_table_format.h"

namespace {

// A digest that starts with `start`, so that a test can say what comes before what.
TPathDigest Digest(std::uint64_t start, std::uint8_t last = 0) {
    TPathDigest digest;
    for (std::size_t index = 0; index < 8; ++index) {
        digest.bytes[index] = static_cast<std::uint8_t>(start >> (56 - 8 * index));
    }
    digest.bytes[31] = last;
    return digest;
}

constexpr TDateTime Date(std::int64_t milliseconds) {
    return {milliseconds};
}

std::string Saved(const THashTable& table) {
    std::string bytes;
    EXPECT_TRUE(WriteHashRecords(table.Store(), table.HasIndex(), [&bytes](std::string_view piece) {
        bytes += piece;
        return true;
    }));
    return bytes;
}

TEST(HashTable, RecordsEachHashOnceAndFindsTheFirstOfEqualOnes) {
    THashTable table;
    EXPECT_FALSE(table.IsOpen());
    table.Open();
    EXPECT_EQ(table.Find(Digest(1)), std::nullopt);
    table.AddIndex();
    table.RecordCopiedFile(Digest(1), Date(10));
    table.RecordCopiedFile(Digest(2), Date(20));
    table.RecordCopiedFile(Digest(1), Date(11));
    EXPECT_EQ(table.RecordCount(), 2u);
    EXPECT_TRUE(table.Modified());

    table.ClearIndex();
    table.Append(Digest(1), Date(12));
    EXPECT_EQ(table.RecordCount(), 3u);
    EXPECT_EQ(table.Find(Digest(1)), Date(11));
    table.RecordCopiedFile(Digest(1), Date(13));
    EXPECT_EQ(table.Find(Digest(1)), Date(13));
    EXPECT_EQ(table.RecordCount(), 3u);

    table.Close();
    EXPECT_EQ(table.RecordCount(), 0u);
    EXPECT_FALSE(table.Modified());
    EXPECT_EQ(table.Find(Digest(1)), std::nullopt);
}

// The table against a plain map, through growth, loading in either order, and more growth.
TEST(HashTable, AgreesWithAMap) {
    std::mt19937_64 random(1);
    std::map<TPathDigest, TDateTime> expected;
    THashTable table;
    for (int round = 0; round < 4; ++round) {
        for (int count = 0; count < 3000; ++count) {
            // Few starts, so that many digests share a bucket and some are recorded twice.
            const TPathDigest digest =
                Digest((random() % 700) << 50, static_cast<std::uint8_t>(random() % 8));
            const TDateTime date = Date(static_cast<std::int64_t>(random() % 1000000));
            table.RecordCopiedFile(digest, date);
            expected[digest] = date;
        }
        ASSERT_EQ(table.RecordCount(), expected.size());
        for (const auto& [digest, date] : expected) {
            ASSERT_EQ(table.Find(digest), date);
            TPathDigest absent = digest;
            absent.bytes[30] = 1;
            ASSERT_EQ(table.Find(absent), std::nullopt);
        }
        if (round % 2 == 0) {
            table.AddIndex();
        } else {
            table.ClearIndex();
        }
        table.Assign(ReadHashRecords(Saved(table)));
    }
}

TEST(HashTable, ASnapshotStaysAsItWas) {
    THashTable table;
    table.RecordCopiedFile(Digest(1), Date(1));
    const auto early = table.Snapshot();
    const auto same = table.Snapshot();
    table.RecordCopiedFile(Digest(1), Date(2));
    table.RecordCopiedFile(Digest(2), Date(2));
    const auto late = table.Snapshot();
    table.Close();
    for (const auto& snapshot : {early, same}) {
        EXPECT_EQ(snapshot->Find(Digest(1)), Date(1));
        EXPECT_EQ(snapshot->Find(Digest(2)), std::nullopt);
    }
    EXPECT_EQ(late->Find(Digest(1)), Date(2));
    EXPECT_EQ(late->Find(Digest(2)), Date(2));
}

// For the thread sanitizer: one thread looks up while the owner changes, replaces and drops the table.
TEST(HashTable, ASnapshotIsReadWhileTheTableChanges) {
    constexpr std::uint64_t kRecords = 20'000;
    THashTable table;
    table.AddIndex();
    for (std::uint64_t number = 0; number < kRecords; ++number) {
        table.RecordCopiedFile(Digest(number), Date(1));
    }
    for (int run = 0; run < 20; ++run) {
        std::atomic<bool> isReading = false;
        std::thread reader([&isReading, snapshot = table.Snapshot()] {
            for (std::uint64_t number = 0; number < kRecords; ++number) {
                EXPECT_TRUE(snapshot->Find(Digest(number)));
                EXPECT_FALSE(snapshot->Find(Digest(number, 1)));
                isReading = true;
            }
        });
        while (!isReading) {
            std::this_thread::yield();
        }
        for (std::uint64_t number = 0; number < kRecords; number += 7) {
            table.RecordCopiedFile(Digest(number), Date(run));
            table.RecordCopiedFile(Digest(number, 2), Date(run));
        }
        if (run % 3 == 0) {
            table.Assign(ReadHashRecords(Saved(table)));
        }
        reader.join();
    }
}

// Files made to be slow: equal hashes, hashes with equal beginnings, in order and not. A table whose cost per
// record grows with the number of records would need minutes here.
TEST(HashTable, CraftedFilesLoadAndAnswerInLinearTime) {
    constexpr std::uint64_t kRecords = 100'000;
    const auto start = std::chrono::steady_clock::now();
    for (const bool sorted : {true, false}) {
        for (int kind = 0; kind < 3; ++kind) {
            THashTable table;
            table.Append(Digest(~std::uint64_t{0}), Date(1));
            for (std::uint64_t number = 0; number < kRecords; ++number) {
                TPathDigest digest = kind == 0   ? Digest(5)
                                     : kind == 1 ? Digest(number)
                                                 : Digest(number << 40);
                digest.bytes[20] = 9;
                table.Append(digest, Date(1));
            }
            if (sorted) {
                table.AddIndex();
            }
            table.Assign(ReadHashRecords(Saved(table)));
            ASSERT_EQ(table.RecordCount(), kRecords + 1);
            for (std::uint64_t number = 0; number < kRecords; ++number) {
                ASSERT_FALSE(table.Find(Digest(number)));
            }
        }
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
}

}  // namespace
