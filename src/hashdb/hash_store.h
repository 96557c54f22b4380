// The records of the hash table and the index over them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/date_time.h"
#include "support/path_digest.h"

// One known source file: the hash of its path, and the date of its copy.
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

// Maps digests to 32-bit numbers under which those that differ seldom agree, whatever the digests are: the
// factors are drawn once per process, so no file can be made whose records all meet in one place.
class TDigestMixer {
public:
    TDigestMixer();
    std::uint32_t operator()(const TPathDigest& digest) const;

private:
    std::array<std::uint64_t, 9> factors_;
};

// Records in the order in which they came, 40 bytes each in blocks that never move, and an index of 8 bytes
// per slot at most three quarters full: 51 to 62 bytes per record. Copying it copies all of that.
class THashStore {
public:
    std::size_t RecordCount() const { return count_ + foreign_.size(); }

    // Makes room in the index, so that it is laid out once. Throws std::runtime_error (UTF-8, German) beyond
    // 3 * 2^30 records, as appending does.
    void Reserve(std::size_t recordCount);

    // Appends a record; an earlier one with the same HASH stays the one that is found.
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
        return blocks_[number / kRecordsPerBlock][number % kRecordsPerBlock];
    }
    // How many of them, from the first on, are in ascending order of HASH.
    std::size_t SortedCount() const { return sortedCount_; }
    std::size_t ForeignCount() const { return foreign_.size(); }
    TForeignRecord Foreign(std::size_t number) const;

private:
    static constexpr std::size_t kRecordsPerBlock = std::size_t{1} << 14;

    // A place of the index: the mixed digest, by which most others are told apart without reading the
    // record, and the number of the record plus one, 0 for an empty place.
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

    HashRecord& Ordinary(std::size_t number) {
        return blocks_[number / kRecordsPerBlock][number % kRecordsPerBlock];
    }
    // The slot that holds the digest, or the empty one where it belongs. There must be slots.
    std::size_t FindSlot(const TPathDigest& hash, std::uint32_t mixed) const;
    std::size_t HomeOf(std::uint32_t mixed) const {
        return static_cast<std::size_t>(std::uint64_t{mixed} << slotBits_ >> 32);
    }
    bool NeedsMoreSlots() const { return 4 * (usedSlots_ + 1) > 3 * slots_.size(); }
    void SetSlotBits(unsigned slotBits);
    void AppendRecord(const TPathDigest& hash, TDateTime date);
    void AppendAt(std::size_t slot, std::uint32_t mixed, const TPathDigest& hash, TDateTime date);

    TDigestMixer mix_;
    std::vector<std::vector<HashRecord>> blocks_;
    std::size_t count_ = 0;
    std::size_t sortedCount_ = 0;
    std::vector<TSlot> slots_;
    unsigned slotBits_ = 0;
    std::size_t usedSlots_ = 0;
    std::string foreignBytes_;
    std::deque<TForeignPlace> foreign_;
};
