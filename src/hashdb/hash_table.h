// The table of the source files that have a copy, and of the dates they had when they were copied.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>

#include "hashdb/hash_store.h"
#include "support/date_time.h"
#include "support/path_digest.h"

// The records, frozen: safe to read on any thread while the table goes on changing.
class THashSnapshot {
public:
    explicit THashSnapshot(std::shared_ptr<const THashStore> store) : store_(std::move(store)) {}

    // The date of the first record with that HASH; a record whose date has no value counts as 0.
    std::optional<TDateTime> Find(const TPathDigest& hash) const { return store_->Find(hash); }
    const THashStore& Store() const { return *store_; }

private:
    std::shared_ptr<const THashStore> store_;
};

// The hash table NasData: records with an index on HASH, compact enough for millions of files. Belongs to
// the window's thread; another thread reads a snapshot.
class THashTable {
public:
    THashTable();
    THashTable(const THashTable&) = delete;
    THashTable& operator=(const THashTable&) = delete;
    ~THashTable();

    bool IsOpen() const { return isOpen_; }
    void Open() { isOpen_ = true; }
    // Drops the records.
    void Close();

    std::size_t RecordCount() const { return store_->RecordCount(); }

    // With the index the table's order is that of HASH, without it the one in which the records came. Of
    // records with the same HASH the first in table order is the one that is found, and they keep their
    // order. Sorting is done when the order is asked for, that is when the file is written.
    bool HasIndex() const { return hasIndex_; }
    void AddIndex() { hasIndex_ = true; }
    void ClearIndex() { hasIndex_ = false; }

    // The date of the first record with that HASH; a record whose date has no value counts as 0. Works with
    // and without an index.
    std::optional<TDateTime> Find(const TPathDigest& hash) const { return store_->Find(hash); }

    // Sets the date of the record with that HASH, or appends one.
    void RecordCopiedFile(const TPathDigest& hash, TDateTime date);
    // Appends without looking.
    void Append(const TPathDigest& hash, TDateTime date);

    // Replaces all records and opens the table, as loading does.
    void Assign(THashStore store);
    // The same with the records of another table, which is closed then.
    void TakeOver(THashTable& other);
    const THashStore& Store() const { return *store_; }

    // Whether records changed since the table was last loaded or saved.
    bool Modified() const { return modified_; }
    void SetModified(bool modified) { modified_ = modified; }

    // A look-up copy that costs nothing until the table is next changed; changes copy the blocks of records
    // that they touch.
    std::shared_ptr<const THashSnapshot> Snapshot() const;

private:
    THashStore& StoreToChange();

    std::shared_ptr<THashStore> store_;
    // Set once a snapshot was given out, whether or not it still lives: asking who else holds the store
    // would race with another thread that lets go of it.
    mutable bool storeIsShared_ = false;
    bool isOpen_ = false;
    bool hasIndex_ = false;
    bool modified_ = false;
};
