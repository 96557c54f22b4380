// The table that says when each source file was last copied.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "support/date_time.h"
#include "support/path_digest.h"

// One known source file: the hash of its path, and the date of its copy.
struct HashRecord {
    TPathDigest HASH;
    TDateTime Datum;
};

// What a look-up needs, frozen: safe to read on any thread while the table goes on changing.
class THashSnapshot;

// The hash table NasData: records with an index on HASH, compact enough for millions of files. Belongs to
// the window's thread; another thread reads a snapshot.
class THashTable {
public:
    THashTable();
    THashTable(const THashTable&) = delete;
    THashTable& operator=(const THashTable&) = delete;
    ~THashTable();

    bool IsOpen() const;
    void Open();
    // Drops the records.
    void Close();

    std::size_t RecordCount() const;

    bool HasIndex() const;
    // Indexes the table on HASH and keeps it sorted on it. Of records with the same HASH the first in table
    // order is the one that is found.
    void AddIndex();
    void ClearIndex();

    // The date of the first record with that HASH; a record whose date has no value counts as 0. Works with
    // and without an index.
    std::optional<TDateTime> Find(const TPathDigest& hash) const;

    // Sets the date of the record with that HASH, or appends one.
    void RecordCopiedFile(const TPathDigest& hash, TDateTime date);
    // Appends without looking.
    void Append(const TPathDigest& hash, TDateTime date);

    // Whether records changed since the table was last loaded or saved.
    bool Modified() const;
    void SetModified(bool modified);

    // A look-up copy that costs nothing until the table is next changed.
    std::shared_ptr<const THashSnapshot> Snapshot() const;
};
