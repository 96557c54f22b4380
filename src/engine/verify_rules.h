// What a check of the backup goes by: which files, what is asked of a copy, and whether two files are one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>

#include "engine/copy_decision.h"
#include "support/date_time.h"
#include "support/error_code.h"
#include "support/path_digest.h"

// The files of one check: those whose path hash falls into `percent` of a hundred parts, from part `first`
// (0 to 99) on, going round. A check that begins where the last one ended sees others, until all have had
// their turn.
struct TVerifySlice {
    unsigned first = 0;
    unsigned percent = 100;

    bool Holds(const TPathDigest& path) const;
    // Where the next check begins.
    unsigned Next() const { return (first + percent) % 100; }
};

enum class TVerifyStep { ReadBoth, ToBeCopied, WrongSize, Missing };

// What the dates and sizes say of a copy, none when it is missing. What a run would copy because it is newer
// than its copy is not bad. `recorded` and `local` as for DecideCopy; a file that is not recorded in a table
// with records (`recordsAreKnown`) has never been copied yet.
TVerifyStep NextVerifyStep(const TFileState& source, TDateTime local, std::optional<TDateTime> recorded,
                           const std::optional<TFileState>& copy, bool recordsAreKnown);

// Reads on from where it stands, and fills `block` as far as its file goes.
using TBlockReader = std::function<TErrorCode(std::span<std::byte> block, std::size_t& read)>;

struct TStreamComparison {
    enum class TEnd { Same, Different, SourceFailed, CopyFailed, Stopped };

    TEnd end = TEnd::Same;
    TErrorCode error = 0;    // why reading failed
    std::uint64_t same = 0;  // bytes from the beginning that are the same on both sides
};

// Compares two files to their ends, or to the first byte that differs; where one ends early is a difference.
// The two blocks are of one size, and not empty. `goOn` is told the bytes of each block, and answers whether
// to go on.
TStreamComparison CompareStreams(const TBlockReader& source, std::span<std::byte> sourceBlock,
                                 const TBlockReader& copy, std::span<std::byte> copyBlock,
                                 const std::function<bool(std::size_t bytes)>& goOn);
