// Several calls to a distant disk under way at once, their results taken in order.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

// What a new thread of jobs does first, its priority say. What it answers, if anything, is called to free
// that thread from a call of the system it is stuck in.
using TThreadBeginning = std::function<std::function<void()>()>;

// The threads behind TJobsInOrder. A thread is started when a job finds none that is free.
class TJobThreads {
public:
    // At most `most` threads, 1 or more.
    TJobThreads(std::size_t most, TThreadBeginning begin);
    TJobThreads(const TJobThreads&) = delete;
    TJobThreads& operator=(const TJobThreads&) = delete;
    ~TJobThreads();

    // Jobs are begun in the order in which they are added. One added after a stop is never begun.
    void Add(std::function<void()> job);

    // No further job is begun.
    void Stop();
    // Stops, frees the threads from what they are stuck in, and waits up to `maxWait` milliseconds for the
    // jobs under way, calling `whileWaiting` a few times a second; true when they have ended. Those that have
    // not are left to themselves.
    bool End(std::uint32_t maxWait, const std::function<void()>& whileWaiting = {});

private:
    struct TShared;

    static void Work(const std::shared_ptr<TShared>& shared);

    const std::size_t most_;
    const TThreadBeginning begin_;
    const std::shared_ptr<TShared> shared_;
    bool areLeft_ = false;
};

// Jobs that run on a few threads; their results are taken one after another, in the order of the jobs.
// Belongs to the thread that made it. A job that is stuck in a call of the system when this goes is left to
// itself after some seconds, so it must own whatever it works with, or work with what lasts as long as the
// program.
template <typename Result>
class TJobsInOrder {
public:
    explicit TJobsInOrder(std::size_t threads, TThreadBeginning begin = {})
        : threads_(threads, std::move(begin)) {}

    void Add(std::function<Result()> job) {
        const auto place = std::make_shared<TPlace>();
        threads_.Add([place, signal = signal_, job = std::move(job)]() mutable {
            std::optional<Result> result;
            std::exception_ptr failure;
            try {
                result.emplace(job());
            } catch (...) {
                failure = std::current_exception();
            }
            job = nullptr;
            {
                const std::lock_guard lock(signal->mutex);
                place->result = std::move(result);
                place->failure = std::move(failure);
                place->hasEnded = true;
            }
            signal->changed.notify_one();
        });
        places_.push_back(place);
    }

    // How many were added and not taken.
    std::size_t Count() const { return places_.size(); }

    // What the first job answered, or threw; nothing when it has not ended after `maxWait` milliseconds, or
    // when there is none.
    std::optional<Result> TakeFirst(std::uint32_t maxWait) {
        if (places_.empty()) {
            return std::nullopt;
        }
        std::unique_lock lock(signal_->mutex);
        signal_->changed.wait_for(lock, std::chrono::milliseconds(maxWait),
                                  [this] { return places_.front()->hasEnded || signal_->isWoken; });
        signal_->isWoken = false;
        if (!places_.front()->hasEnded) {
            return std::nullopt;
        }
        const std::shared_ptr<TPlace> first = std::move(places_.front());
        places_.pop_front();
        if (first->failure) {
            std::rethrow_exception(std::exchange(first->failure, nullptr));
        }
        return std::move(first->result);
    }

    // The first job is never told, whatever comes of it.
    void LeaveFirst() {
        if (!places_.empty()) {
            places_.pop_front();
        }
    }

    // What it answers may be called on any thread, at any time, and ends the wait of TakeFirst, or the next
    // one: somebody else has something to say.
    std::function<void()> WakeUp() const {
        return [signal = signal_] {
            {
                const std::lock_guard lock(signal->mutex);
                signal->isWoken = true;
            }
            signal->changed.notify_one();
        };
    }

    // No further job is begun. Those that were not are never told; those that are under way still end.
    void Stop() { threads_.Stop(); }
    bool End(std::uint32_t maxWait, const std::function<void()>& whileWaiting = {}) {
        return threads_.End(maxWait, whileWaiting);
    }

private:
    struct TPlace {
        std::optional<Result> result;
        std::exception_ptr failure;
        bool hasEnded = false;
    };
    struct TSignal {
        std::mutex mutex;  // for the places, too
        std::condition_variable changed;
        bool isWoken = false;
    };

    const std::shared_ptr<TSignal> signal_ = std::make_shared<TSignal>();
    std::deque<std::shared_ptr<TPlace>> places_;
    TJobThreads threads_;
};
