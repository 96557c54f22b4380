#include "engine/jobs_in_order.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <random>
#include <stdexcept>
#include <thread>

namespace {

constexpr std::uint32_t kLong = 60'000;  // milliseconds

TEST(JobsInOrder, ResultsComeInOrderHoweverLongEachTakes) {
    std::mt19937 random(7);
    std::atomic<int> underWay = 0;
    std::atomic<int> most = 0;
    TJobsInOrder<int> jobs(4);
    for (int number = 0; number < 500; ++number) {
        jobs.Add([&, number, pause = random() % 300] {
            const int now = ++underWay;
            for (int seen = most; now > seen && !most.compare_exchange_weak(seen, now);) {
            }
            std::this_thread::sleep_for(std::chrono::microseconds(pause));
            --underWay;
            if (number % 50 == 49) {
                throw std::runtime_error("broken");
            }
            return number;
        });
    }
    for (int number = 0; number < 500; ++number) {
        if (number % 50 == 49) {
            EXPECT_THROW(static_cast<void>(jobs.TakeFirst(kLong)), std::runtime_error);
        } else {
            EXPECT_EQ(jobs.TakeFirst(kLong), number);
        }
    }
    EXPECT_EQ(jobs.Count(), 0U);
    EXPECT_EQ(jobs.TakeFirst(kLong), std::nullopt);
    EXPECT_LE(most, 4);
}

TEST(JobsInOrder, AStopBeginsNothingMoreAndFreesWhatIsStuck) {
    std::atomic<bool> freed = false;
    std::atomic<int> begun = 0;
    int asked = 0;
    TJobsInOrder<int> jobs(2, [&freed] { return [&freed] { freed = true; }; });
    for (int number = 0; number < 10; ++number) {
        jobs.Add([&] {
            ++begun;
            while (!freed) {
                std::this_thread::yield();
            }
            return 1;
        });
    }
    while (begun < 2) {
        std::this_thread::yield();
    }
    EXPECT_EQ(jobs.TakeFirst(1), std::nullopt);
    jobs.Stop();
    EXPECT_FALSE(freed) << "a stop lets end what is under way";
    EXPECT_TRUE(jobs.End(kLong, [&asked] { ++asked; }));
    EXPECT_EQ(begun, 2);
    EXPECT_EQ(jobs.TakeFirst(kLong), 1);
    EXPECT_EQ(jobs.TakeFirst(kLong), 1);
    EXPECT_EQ(jobs.TakeFirst(1), std::nullopt) << "never begun";
}

TEST(JobsInOrder, WhoeverWaitsIsNotHeldUpByAJobThatNeverEnds) {
    const auto release = std::make_shared<std::atomic<bool>>(false);
    const auto ended = std::make_shared<std::atomic<bool>>(false);
    std::atomic<bool> begun = false;
    int asked = 0;
    const auto start = std::chrono::steady_clock::now();
    {
        TJobsInOrder<int> jobs(1);
        jobs.Add([release, ended, &begun] {
            begun = true;
            while (!*release) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
            *ended = true;
            return 1;
        });
        while (!begun) {
            std::this_thread::yield();
        }
        EXPECT_FALSE(jobs.End(200, [&asked] { ++asked; }));
        EXPECT_GT(asked, 0);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(3)) << "it was waited for once";
    *release = true;
    while (!*ended) {
        std::this_thread::yield();
    }
}

}  // namespace
