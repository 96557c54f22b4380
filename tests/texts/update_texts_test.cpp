#include "texts/update_texts.h"

#include <gtest/gtest.h>

namespace {

using UpdateTexts::Transfer;

TEST(UpdateTexts, TransferHasTwoDecimalsAndTheSeparatorsOfTheUser) {
    EXPECT_EQ(Transfer(1'264'384, 1536, L",", L"."), L"1.234,75 Kb, speed 1,50 Kb/sec");
    EXPECT_EQ(Transfer(0, 0, L".", L","), L"0.00 Kb, speed 0.00 Kb/sec");
    EXPECT_EQ(Transfer(1'073'741'824, 1'023'994.88, L".", L","), L"1,048,576.00 Kb, speed 1,000.00 Kb/sec");
    EXPECT_EQ(Transfer(1024, -1, L".", L""), L"1.00 Kb, speed 0.00 Kb/sec");
}

}  // namespace
