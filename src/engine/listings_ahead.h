// The listings that a scan compares, made ahead of their turn where they are slow.
#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/jobs_in_order.h"
#include "engine/source_roots.h"
#include "engine/source_walk.h"
#include "engine/task_runtime.h"
#include "support/folder_listing.h"
#include "support/platform_calls.h"

// How a scan asks distant disks.
struct TReadAhead {
    std::size_t atATime = 8;  // folders listed at the same time; 1: each in its turn
    // How long the two listings of a folder take to begin where that is worth while.
    std::chrono::microseconds fromDuration{1000};
};

// A folder's two listings, of which nothing was taken yet.
struct TFolderListings {
    std::unique_ptr<TFolderListing> destination;
    std::unique_ptr<TFolderListing> source;
};

// Where source and destination answer fast, each folder is listed in its turn: to hand it over to another
// thread costs more than that gains. Where two in a row were slow, a number of the next ones is listed on
// several threads; then one alone, with nothing else under way, shows whether that is still worth while, and
// a larger number follows.
//
// What was read ahead is given out only where nothing went wrong: a listing that failed is made anew in its
// turn. A folder that shares its destination is always listed in its turn, since another one's files may have
// been copied there in the meantime. Belongs to the scan's thread.
class TListingsAhead {
public:
    using TDestinationOf = std::function<std::wstring(const TSourceFolder& folder)>;

    // The folders are those of a walk to which no further row is added once the first listing is taken.
    TListingsAhead(const TPlatformCalls& calls, const IOmniTask& task, const TSourceRoots& roots,
                   const std::vector<TSourceFolder>& folders, TDestinationOf destinationOf,
                   const TReadAhead& manner);

    // The listings of the folder of that number. Numbers rise; one may be taken again, others left out.
    // Nothing when the task is asked to stop while they are waited for.
    std::optional<TFolderListings> Take(std::size_t number);
    // What was read ahead may no longer be true: it is made anew. Frees threads that are stuck in it.
    void Forget();

private:
    std::optional<TFolderListings> TakeReadAhead();
    TFolderListings ListInTurn(const TSourceFolder& folder);
    void Judge(std::chrono::steady_clock::duration listing);
    void ReadOn();
    void Add(const TSourceFolder& folder);

    const TPlatformCalls& calls_;
    const IOmniTask& task_;
    const TSourceRoots& roots_;
    const std::vector<TSourceFolder>& folders_;
    const TDestinationOf destinationOf_;
    const TReadAhead manner_;
    std::optional<TJobsInOrder<TFolderListings>> jobs_;
    std::deque<std::size_t> numbers_;  // of the folders that are read ahead
    std::size_t next_ = 0;
    std::size_t allowance_ = 0;  // how many more are read ahead before one is listed alone
    unsigned slowInARow_ = 0;
};
