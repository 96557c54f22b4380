#include "engine/listings_ahead.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "engine/thread_manner.h"
#include "support/error_code.h"

namespace {

using TClock = std::chrono::steady_clock;

constexpr std::size_t kFoldersAhead = 32;
// Of each listing, so that huge folders do not fill the memory; the others are read in the folder's turn.
constexpr std::size_t kEntriesAhead = 2048;
constexpr std::size_t kFirstAllowance = 16;
constexpr std::size_t kLargestAllowance = 1024;
constexpr std::uint32_t kWaitStep = 50;  // milliseconds; a stop is noticed within this time

// Why what was read ahead is not to be used; ERROR_SUCCESS when it is.
TErrorCode WhyFailed(const TFolderListings& listings) {
    const TFolderListing& destination = *listings.destination;
    if (destination.Error() != ERROR_SUCCESS && !destination.FolderIsMissing()) {
        return destination.Error();
    }
    return listings.source->Error();
}

TFolderListings ReadAhead(const TPlatformCalls& calls, const std::wstring& destination,
                          const std::wstring& source) {
    TFolderListings listings;
    listings.destination = std::make_unique<TFolderListing>(calls, destination);
    listings.destination->ReadAhead(kEntriesAhead);
    if (listings.destination->Error() == ERROR_SUCCESS || listings.destination->FolderIsMissing()) {
        listings.source = std::make_unique<TFolderListing>(calls, source);
        listings.source->ReadAhead(kEntriesAhead);
    }
    return listings;
}

}  // namespace

TListingsAhead::TListingsAhead(const TPlatformCalls& calls, const IOmniTask& task, const TSourceRoots& roots,
                               const std::vector<TSourceFolder>& folders, TDestinationOf destinationOf,
                               const TReadAhead& manner)
    : calls_(calls),
      task_(task),
      roots_(roots),
      folders_(folders),
      destinationOf_(std::move(destinationOf)),
      manner_(manner) {}

std::optional<TFolderListings> TListingsAhead::Take(std::size_t number) {
    if (!numbers_.empty() && numbers_.front() < number) {
        // One was left out because its source is gone, and so may be what else was read there.
        Forget();
    }
    if (numbers_.empty()) {
        next_ = number + 1;
    }
    std::optional<TFolderListings> listings;
    if (!numbers_.empty() && numbers_.front() == number) {
        listings = TakeReadAhead();
        if (task_.Terminated()) {
            return std::nullopt;
        }
    }
    if (!listings) {
        listings = ListInTurn(folders_[number]);
    }
    ReadOn();
    return listings;
}

void TListingsAhead::Forget() {
    jobs_.reset();
    numbers_.clear();
    allowance_ = 0;
    slowInARow_ = 0;
}

std::optional<TFolderListings> TListingsAhead::TakeReadAhead() {
    try {
        std::optional<TFolderListings> listings;
        while (!listings && !task_.Terminated()) {
            listings = jobs_->TakeFirst(kWaitStep);
        }
        if (!listings) {
            return std::nullopt;
        }
        numbers_.pop_front();
        const TErrorCode error = WhyFailed(*listings);
        if (error == ERROR_SUCCESS) {
            return listings;
        }
        if (IsOutOfReach(error)) {
            Forget();
        }
    } catch (const std::exception&) {
        Forget();
    }
    return std::nullopt;
}

TFolderListings TListingsAhead::ListInTurn(const TSourceFolder& folder) {
    const auto begun = TClock::now();
    TFolderListings listings;
    listings.destination = std::make_unique<TFolderListing>(calls_, destinationOf_(folder));
    listings.source = std::make_unique<TFolderListing>(calls_, folder.path);
    if (numbers_.empty()) {
        Judge(TClock::now() - begun);
    }
    return listings;
}

void TListingsAhead::Judge(TClock::duration listing) {
    slowInARow_ = listing >= manner_.fromDuration ? slowInARow_ + 1 : 0;
    if (slowInARow_ < 2 || manner_.atATime < 2) {
        allowance_ = 0;
    } else {
        const unsigned doublings = 2 * std::min(slowInARow_ - 2, 3U);
        allowance_ = std::min(kFirstAllowance << doublings, kLargestAllowance);
    }
}

void TListingsAhead::ReadOn() {
    try {
        while (allowance_ > 0 && numbers_.size() < kFoldersAhead && next_ < folders_.size()) {
            const std::size_t number = next_++;
            const TSourceFolder& folder = folders_[number];
            if (!folder.sharesTarget && !roots_.IsLost(folder.root)) {
                numbers_.push_back(number);
                Add(folder);
                --allowance_;
            }
        }
    } catch (const std::exception&) {
        // No thread is to be had: in their turn, then.
        Forget();
    }
}

void TListingsAhead::Add(const TSourceFolder& folder) {
    if (!jobs_) {
        jobs_.emplace(manner_.atATime, [] {
            ApplyThreadPriority(TTaskPriority::Highest);
            return BreakOffCallsOfThisThread();
        });
    }
    // Nothing of this object: a thread that is stuck outlives it.
    jobs_->Add([&calls = calls_, destination = destinationOf_(folder), source = folder.path] {
        return ReadAhead(calls, destination, source);
    });
}
