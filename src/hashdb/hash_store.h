// The records of the hash table and the index over them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/date_time.h"
#include "support/path_digest.h"

// One known source file: the hash of its path, and the last-write date it had when it was copied (after
// reindexing, that of its copy).
struct HashRecord {
    TPathDigest HASH;
    TDateTime Datum;
};

// The Datum of a record whose date has no value.
inline constexpr TDateTime kNoDate{std::numeric_limits<std::int64_t>::min()};

// A record whose HASH is no path hash (no value, or other text than 64 upper-case hexadecimal digits). No
// look-up finds such a record; it is only kept.
struct TForeignRecord {
    std::uint32_t place;     // how many ordinary records stand before it
    std::string_view bytes;  // the whole record as on file
    std::string_view hash;   // the characters of its HASH
};

// The first eight bytes of a digest as a number that is ordered as the digest is.
inline std::uint64_t StartOf(const TPathDigest& hash) {
    const auto at = [&hash](std::size_t index) { return std::uint64_t{hash.bytes[index]}; };
    return at(0) << 56 | at(1) << 48 | at(2) << 40 | at(3) << 32 | at(4) << 24 | at(5) << 16 | at(6) << 8 |
           at(7);
}

// Maps digests to 32-bit numbers under which those that differ seldom agree, whatever the digests are: the
// factors are drawn once per process, so no file can be made whose records all meet in one place.
class TDigestMixer {
public:
    TDigestMixer();
    std::uint32_t operator()(const TPathDigest& digest) const;

private:
    std::array<std::uint64_t, 9> factors_;
};

// Records in the order in which they came, 40 bytes each, in blocks, so that growing moves none. The sorted
// ones, those that come in ascending order of HASH from the first on, as a saved table does, are found
// through a directory by the beginning of HASH: it costs 2.1 bytes per record and next to no work while
// loading. The late ones, all that come after the first out of order, are found through hashed slots: 11 to
// 22 bytes each.
//
// Hashed slots for all would be one way less, and load, snapshots, saving and memory would bear it. The
// look-up does not: it waits for two far places in memory, slot and record, where the directory mostly stays
// in the caches, and took 1.2 to 2.1 times as long as std::unordered_map's where this one takes 0.8. What
// else looks too clever was tried without it as well: a plain number per bucket, 4 or 8 bytes per record,
// comes out at 1.0 to 1.4; halving instead of the short walk within a bucket at 1.1 (docs/performance.md, "A
// look-up").
class THashStore {
public:
    // The directory is laid out for as many records as expected; without any, all records get slots.
    explicit THashStore(std::size_t expectedRecords = 0);
    THashStore(THashStore&&) noexcept = default;
    THashStore& operator=(THashStore&&) noexcept = default;
    ~THashStore() = default;

    // A store with the same records to go on with: blocks are copied when it first changes them. This one
    // must not be changed any more, and may then be read on any thread.
    THashStore Successor() const;

    std::size_t RecordCount() const { return count_ + foreign_.size(); }

    // Appends a record; an earlier one with the same HASH stays the one that is found. This and Record throw
    // EProblem (TooManyRecords) beyond 3 * 2^30 records.
    void Append(const TPathDigest& hash, TDateTime date);
    // `bytes` is the whole record as on file, its HASH the `hashLength` characters from `hashStart` on.
    void AppendForeign(std::string_view bytes, std::size_t hashStart, std::size_t hashLength);
    // Sets the date of the first record with that HASH, or appends one.
    void Record(const TPathDigest& hash, TDateTime date);

    // The date of the first record with that HASH, kNoDate counting as 0.
    std::optional<TDateTime> Find(const TPathDigest& hash) const;

    // The ordinary records by their number in the order of arrival.
    std::size_t OrdinaryCount() const { return count_; }
    const HashRecord& Ordinary(std::size_t number) const {
        return blocks_[number / kRecordsPerBlock].records[number % kRecordsPerBlock];
    }
    // How many of them, from the first on, are known to be in ascending order of HASH.
    std::size_t SortedCount() const { return sortedCount_; }
    std::size_t ForeignCount() const { return foreign_.size(); }
    TForeignRecord Foreign(std::size_t number) const;

private:
    static constexpr std::size_t kRecordsPerBlock = std::size_t{1} << 13;
    static constexpr std::size_t kNoRecord = std::numeric_limits<std::size_t>::max();

    struct TBlock {
        std::shared_ptr<HashRecord[]> records;
        bool isOwn;  // false: an earlier store has it, too
    };

    // The mixed digest, by which most others are told apart without reading the record, and the number of
    // the record plus one, 0 for an empty slot.
    struct TSlot {
        std::uint32_t mixed = 0;
        std::uint32_t record = 0;
    };
    struct TForeignPlace {
        std::uint64_t start;  // in foreignBytes_
        std::uint32_t place;
        std::uint16_t hashStart;
        std::uint16_t hashLength;
    };

    THashStore(const THashStore&) = default;

    HashRecord& OrdinaryToChange(std::size_t number);
    bool ContinuesSortedOnes(const TPathDigest& hash) const;
    void AppendSorted(const TPathDigest& hash, TDateTime date);
    void AppendRecord(const TPathDigest& hash, TDateTime date);
    std::uint64_t BucketOf(const TPathDigest& hash) const;
    // The number of the first record with that HASH, or kNoRecord: among the sorted ones, among those of them
    // from a number on, among the others.
    std::size_t FindSorted(const TPathDigest& hash) const;
    [[gnu::noinline]] std::size_t FindSortedFrom(std::size_t number, const TPathDigest& hash) const;
    [[gnu::noinline]] std::size_t FindSlotted(const TPathDigest& hash) const;
    // The number of the first of these sorted records whose HASH is not smaller; `last` when there is none.
    std::size_t FirstSortedNotBefore(const TPathDigest& hash, std::size_t first, std::size_t last) const;

    // The slot that holds the digest, or the empty one where it belongs.
    std::size_t FindSlot(const TPathDigest& hash, std::uint32_t mixed) const;
    // The slot that holds the digest, or one that is empty and has room for it.
    TSlot& SlotFor(const TPathDigest& hash);
    void AppendTo(TSlot& slot, const TPathDigest& hash, TDateTime date);
    void DoubleSlots();

    std::vector<TBlock> blocks_;
    std::size_t count_ = 0;

    static constexpr std::size_t kBucketsPerGroup = 64;

    // Where the first record stands that has a bucket's beginning or a greater one.
    struct TDirectory {
        std::vector<std::uint32_t> groups;  // per group of buckets: that number for its first bucket
        std::vector<std::uint8_t> offsets;  // per bucket: how far behind it; 255: that far or farther
    };

    bool takesSortedOnes_;
    std::size_t sortedCount_ = 0;
    // Ends with the bucket of the last sorted record.
    std::shared_ptr<TDirectory> directory_;
    std::uint64_t buckets_ = 0;
    std::uint64_t filledBuckets_ = 0;

    TDigestMixer mix_;
    std::vector<TSlot> slots_;

    std::string foreignBytes_;
    std::deque<TForeignPlace> foreign_;
};
