// The hash table against what else could hold it: std::unordered_map, and SQLite in memory and on disk.
//
//   hash_table_bench RECORDS ROUNDS FOLDER
#include <malloc.h>
#include <sqlite3.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <vector>

#include "hashdb/hash_table.h"
#include "hashdb/hash_table_format.h"
#include "measure.h"

namespace {

constexpr std::size_t kMostOperations = 300'000;

using TRecords = std::vector<HashRecord>;

TRecords RandomRecords(std::size_t count, std::uint64_t seed) {
    std::mt19937_64 random(seed);
    TRecords records(count);
    for (HashRecord& record : records) {
        for (std::size_t at = 0; at < sizeof record.HASH.bytes; at += sizeof(std::uint64_t)) {
            const std::uint64_t word = random();
            std::memcpy(record.HASH.bytes.data() + at, &word, sizeof word);
        }
        record.Datum = TDateTime{63'700'000'000'000 + static_cast<std::int64_t>(random() % 1'000'000'000)};
    }
    return records;
}

struct TWork {
    TRecords records;  // in ascending order
    std::string file;  // the same as a saved table
    TRecords lookUps;  // known ones in random order
    TRecords updates;  // known and new ones in turn
    std::string folder;
};

class TOurs {
public:
    // Reads the saved table; the others are given the records.
    TOurs(const TWork& work, const std::string&) {
        table_.Assign(ReadHashRecords(work.file));
        table_.AddIndex();
    }
    std::size_t CountKnown(const TRecords& records) const {
        std::size_t known = 0;
        for (const HashRecord& record : records) {
            known += table_.Find(record.HASH) ? 1 : 0;
        }
        return known;
    }
    void Update(const TRecords& records) {
        for (const HashRecord& record : records) {
            table_.RecordCopiedFile(record.HASH, record.Datum);
        }
    }
    // With the first change, which is when the records are copied.
    void Snapshot(const HashRecord& change) {
        const auto snapshot = table_.Snapshot();
        table_.RecordCopiedFile(change.HASH, change.Datum);
    }
    void Save(const std::string& path) const {
        std::ofstream file(path, std::ios::binary);
        static_cast<void>(WriteHashRecords(table_.Store(), true, [&file](std::string_view piece) {
            file.write(piece.data(), static_cast<std::streamsize>(piece.size()));
            return file.good();
        }));
    }

private:
    THashTable table_;
};

struct TFirstBytes {
    std::size_t operator()(const TPathDigest& hash) const {
        std::size_t start = 0;
        std::memcpy(&start, hash.bytes.data(), sizeof start);
        return start;
    }
};

class TStandardMap {
public:
    TStandardMap(const TWork& work, const std::string&) {
        map_.reserve(work.records.size());
        for (const HashRecord& record : work.records) {
            map_.emplace(record.HASH, record.Datum);
        }
    }
    std::size_t CountKnown(const TRecords& records) const {
        std::size_t known = 0;
        for (const HashRecord& record : records) {
            known += map_.find(record.HASH) != map_.end() ? 1 : 0;
        }
        return known;
    }
    void Update(const TRecords& records) {
        for (const HashRecord& record : records) {
            map_.insert_or_assign(record.HASH, record.Datum);
        }
    }
    void Snapshot(const HashRecord& change) {
        const auto copy = map_;
        map_.insert_or_assign(change.HASH, change.Datum);
    }
    void Save(const std::string& path) const {
        TRecords sorted;
        sorted.reserve(map_.size());
        for (const auto& [hash, date] : map_) {
            sorted.push_back({hash, date});
        }
        std::ranges::sort(sorted, {}, &HashRecord::HASH);
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(sorted.data()),
                   static_cast<std::streamsize>(sorted.size() * sizeof(HashRecord)));
    }

private:
    std::unordered_map<TPathDigest, TDateTime, TFirstBytes> map_;
};

// Prepared statements, one transaction, no journal, no waiting for the disk: as fast as it goes.
class TSqlite {
public:
    TSqlite(const TWork& work, const std::string& place) {
        Check(sqlite3_open(place.c_str(), &database_));
        Execute(
            "PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF; PRAGMA cache_size=-2000000;"
            "CREATE TABLE NasData(HASH BLOB PRIMARY KEY, Datum INTEGER) WITHOUT ROWID");
        Prepare("SELECT Datum FROM NasData WHERE HASH=?1", find_);
        Prepare("INSERT INTO NasData VALUES(?1,?2) ON CONFLICT DO UPDATE SET Datum=?2", update_);
        Update(work.records);
    }
    TSqlite(const TSqlite&) = delete;
    TSqlite& operator=(const TSqlite&) = delete;
    ~TSqlite() {
        sqlite3_finalize(find_);
        sqlite3_finalize(update_);
        sqlite3_close(database_);
    }

    std::size_t CountKnown(const TRecords& records) const {
        std::size_t known = 0;
        Execute("BEGIN");
        for (const HashRecord& record : records) {
            Bind(find_, record.HASH);
            known += sqlite3_step(find_) == SQLITE_ROW ? 1 : 0;
            sqlite3_reset(find_);
        }
        Execute("COMMIT");
        return known;
    }
    void Update(const TRecords& records) {
        Execute("BEGIN");
        for (const HashRecord& record : records) {
            Bind(update_, record.HASH);
            sqlite3_bind_int64(update_, 2, record.Datum.milliseconds);
            Check(sqlite3_step(update_) == SQLITE_DONE ? SQLITE_OK : SQLITE_ERROR);
            sqlite3_reset(update_);
        }
        Execute("COMMIT");
    }
    void Snapshot(const HashRecord& change) {
        sqlite3* copy = nullptr;
        Check(sqlite3_open(":memory:", &copy));
        sqlite3_backup* backup = sqlite3_backup_init(copy, "main", database_, "main");
        sqlite3_backup_step(backup, -1);
        Check(sqlite3_backup_finish(backup));
        Update({change});
        sqlite3_close(copy);
    }
    void Save(const std::string& path) const { Execute(("VACUUM INTO '" + path + "'").c_str()); }

private:
    static void Check(int result) {
        if (result != SQLITE_OK) {
            throw std::runtime_error("SQLite: " + std::to_string(result));
        }
    }
    static void Bind(sqlite3_stmt* statement, const TPathDigest& hash) {
        sqlite3_bind_blob(statement, 1, hash.bytes.data(), sizeof hash.bytes, SQLITE_STATIC);
    }
    void Prepare(const char* text, sqlite3_stmt*& statement) const {
        Check(sqlite3_prepare_v3(database_, text, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr));
    }
    void Execute(const char* text) const { Check(sqlite3_exec(database_, text, nullptr, nullptr, nullptr)); }

    sqlite3* database_ = nullptr;
    sqlite3_stmt* find_ = nullptr;
    sqlite3_stmt* update_ = nullptr;
};

TWork MakeWork(std::size_t count, const std::string& folder) {
    TWork work;
    work.records = RandomRecords(count, 1);
    work.folder = folder;
    std::mt19937_64 random(2);
    const std::size_t operations = std::min(count, kMostOperations);
    const auto anyRecord = [&] { return work.records[random() % count]; };
    std::generate_n(std::back_inserter(work.lookUps), operations, anyRecord);
    work.updates = RandomRecords(operations, 3);
    for (std::size_t number = 0; number < operations; number += 2) {
        work.updates[number].HASH = anyRecord().HASH;
    }
    std::ranges::sort(work.records, {}, &HashRecord::HASH);
    THashStore store(count);
    for (const HashRecord& record : work.records) {
        store.Append(record.HASH, record.Datum);
    }
    static_cast<void>(WriteHashRecords(store, true, [&work](std::string_view piece) {
        work.file += piece;
        return true;
    }));
    return work;
}

double BytesInUse() {
    const struct mallinfo2 use = mallinfo2();
    return static_cast<double>(use.uordblks) + static_cast<double>(use.hblkhd);
}

// Times per record or operation in nanoseconds, whole steps in milliseconds.
template <typename Table>
void Measure(const TWork& work, const char* side, const std::string& place) {
    const auto count = static_cast<double>(work.records.size());
    const auto operations = static_cast<double>(work.lookUps.size());
    const std::string saved = work.folder + "/SAVED";
    std::remove(place.c_str());
    std::remove(saved.c_str());
    const double before = BytesInUse();
    std::unique_ptr<Table> table;
    Tell("load", side, SecondsOf([&] { table = std::make_unique<Table>(work, place); }) * 1e9 / count);
    Tell("bytes", side, (BytesInUse() - before) / count);
    std::size_t found = 0;
    Tell("find", side, SecondsOf([&] { found = table->CountKnown(work.lookUps); }) * 1e9 / operations);
    if (found != work.lookUps.size()) {
        throw std::runtime_error("a record was not found");
    }
    Tell("update", side, SecondsOf([&] { table->Update(work.updates); }) * 1e9 / operations);
    Tell("snapshot", side, SecondsOf([&] { table->Snapshot(work.lookUps[0]); }) * 1e3);
    Tell("save", side, SecondsOf([&] { table->Save(saved); }) * 1e3);
    table.reset();
    std::remove(place.c_str());
    std::remove(saved.c_str());
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 4) {
        std::fputs("usage: hash_table_bench RECORDS ROUNDS FOLDER\n", stderr);
        return 64;
    }
    const TWork work = MakeWork(std::strtoul(arguments[1], nullptr, 10), arguments[3]);
    for (int round = std::atoi(arguments[2]); round > 0; --round) {
        Measure<TOurs>(work, "ours", "");
        Measure<TStandardMap>(work, "unordered_map", "");
        Measure<TSqlite>(work, "sqlite_memory", ":memory:");
        Measure<TSqlite>(work, "sqlite_disk", work.folder + "/TABLE");
    }
    return 0;
}
