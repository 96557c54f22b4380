// The records of the hash table as the bytes of "Vardeko.dat", and back.
#pragma once

#include <functional>
#include <string_view>

#include "hashdb/hash_store.h"

// Throws EProblem, as TTableReader does, when the bytes are not a whole file of hash records; TooManyRecords.
THashStore ReadHashRecords(std::string_view bytes);

// Takes the next piece of a file; false ends the writing.
using THashRecordSink = std::function<bool(std::string_view)>;

// Writes the whole file in pieces of about 1 MiB, in ascending order of HASH or in the order in which the
// records came. False when the sink ended it.
[[nodiscard]] bool WriteHashRecords(const THashStore& store, bool sorted, const THashRecordSink& sink);
