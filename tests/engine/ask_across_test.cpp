#include "engine/ask_across.h"

#include <gtest/gtest.h>

#include "engine/jobs_in_order.h"

namespace {

constexpr std::uint32_t kLong = 60'000;  // milliseconds

using TDoubling = TAskAcross<int, int>;

TEST(AskAcross, WhoWaitsForAJobIsWokenByItsQuestionsAndAnswersEachOnce) {
    TJobsInOrder<int> jobs(1);
    const auto doubling = std::make_shared<TDoubling>(jobs.WakeUp());
    jobs.Add([doubling] {
        int sum = 0;
        for (int number = 0; number < 1000; ++number) {
            sum += doubling->Ask(number);
        }
        return sum;
    });
    std::optional<int> sum;
    int woken = 0;
    while (!(sum = jobs.TakeFirst(kLong))) {
        ++woken;
        doubling->AnswerBy([&](int question) {
            // Answered from within: the outer answer is too late, also for the next question.
            if (question % 3 == 0) {
                doubling->AnswerBy([](int nested) { return 2 * nested; });
                return -1;
            }
            return 2 * question;
        });
    }
    EXPECT_EQ(sum, 999 * 1000);
    EXPECT_GE(woken, 1000);
}

TEST(AskAcross, NobodyWaitsForAnAnswerOnceItIsClosed) {
    TJobsInOrder<int> jobs(1);
    const auto doubling = std::make_shared<TDoubling>(jobs.WakeUp());
    jobs.Add([doubling] { return doubling->Ask(1) + doubling->Ask(2); });
    EXPECT_EQ(jobs.TakeFirst(kLong), std::nullopt);
    doubling->Close(7);
    // The second question may wake as well.
    std::optional<int> sum;
    while (!(sum = jobs.TakeFirst(kLong))) {
    }
    EXPECT_EQ(sum, 14);
}

}  // namespace
