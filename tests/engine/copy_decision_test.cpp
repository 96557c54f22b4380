#include "engine/copy_decision.h"

#include <gtest/gtest.h>

namespace {

using enum TCopyDecision;

constexpr std::int64_t kHour = 3'600'000;
// An odd second with a fraction. Local time is two hours ahead.
constexpr std::int64_t kWritten = 1'000'000LL * kHour + 11'234;
constexpr std::int64_t kSize = 100;

TCopyDecision Decide(std::optional<std::int64_t> recordedAgo, std::optional<std::int64_t> copyAgo,
                     std::int64_t copySize = kSize) {
    const TDateTime local{kWritten + 2 * kHour};
    const auto recorded =
        recordedAgo ? std::optional(TDateTime{local.milliseconds - *recordedAgo}) : std::nullopt;
    const auto copy = copyAgo ? std::optional(TFileState{{kWritten - *copyAgo}, copySize}) : std::nullopt;
    return DecideCopy({{kWritten}, kSize}, local, recorded, copy);
}

// The whole table: what the record says, what the copy is, and what follows from both.
TEST(CopyDecision, EveryCombination) {
    enum class TRecord { None, Newer, Same, OlderByAZone, Older };
    const struct {
        TRecord kind;
        std::optional<std::int64_t> ago;
    } records[] = {{TRecord::None, std::nullopt},
                   {TRecord::Newer, -1},
                   {TRecord::Newer, -kHour},
                   {TRecord::Same, 0},
                   {TRecord::OlderByAZone, kHour / 4},
                   {TRecord::OlderByAZone, 26 * kHour},
                   {TRecord::Older, 1},
                   {TRecord::Older, kHour + 1},
                   {TRecord::Older, 26 * kHour + kHour / 4}};
    const struct {
        std::int64_t ago;  // milliseconds before the source, negative: after it
        bool isRounded;
    } copies[] = {
        {4, true},   {234, true}, {1234, true},  {-6, true},     {-766, true},  // 10 ms, 1 s and 2 s, and up
        {1, false},  {5, false},  {233, false},  {235, false},   {1233, false},  {2234, false},
        {-1, false}, {-7, false}, {-767, false}, {-1766, false}, {kHour, false}, {-kHour, false}};
    for (const auto& record : records) {
        const bool isOlder = record.kind == TRecord::Older || record.kind == TRecord::OlderByAZone;
        SCOPED_TRACE(record.ago.value_or(-9));
        EXPECT_EQ(Decide(record.ago, std::nullopt), Copy);
        EXPECT_EQ(Decide(record.ago, 0), isOlder ? Record : Leave);
        EXPECT_EQ(Decide(record.ago, 0, kSize - 1), Copy);
        EXPECT_EQ(Decide(record.ago, 0, kSize + 1), Copy);
        for (const auto& copy : copies) {
            SCOPED_TRACE(copy.ago);
            const TCopyDecision byDates = isOlder || copy.ago > 0 ? Copy : Leave;
            const TCopyDecision rounded = record.kind == TRecord::Older ? Copy : isOlder ? Record : Leave;
            EXPECT_EQ(Decide(record.ago, copy.ago), copy.isRounded ? rounded : byDates);
            EXPECT_EQ(Decide(record.ago, copy.ago, 0), byDates);
        }
    }
}

TEST(CopyDecision, SourcesOnTheGrainAndWithoutADate) {
    const TDateTime even{500'000LL * kHour};
    const std::optional<TFileState> copyBefore = TFileState{{even.milliseconds - 2000}, kSize};
    EXPECT_EQ(DecideCopy({even, kSize}, even, {}, copyBefore), Copy) << "a time that is kept was not rounded";
    // Only a real date is later than 0, and a copy without a date is older.
    EXPECT_EQ(DecideCopy({{-50'000}, 1}, {-50'000}, TDateTime{-90'000}, TFileState{{-70'000}, 1}), Leave);
    EXPECT_EQ(DecideCopy({even, 1}, even, {}, TFileState{{}, 1}), Copy);
    EXPECT_EQ(DecideCopy({{}, 1}, {}, {}, TFileState{{}, 1}), Leave);
}

// Clocks are put back: the second of the two hours between two and three is later, and reads the same.
TEST(CopyDecision, TheHourThatComesTwice) {
    const TDateTime local{kWritten + 2 * kHour};
    const TFileState firstHour{{kWritten}, kSize};
    const TFileState secondHour{{kWritten + kHour}, kSize};
    EXPECT_EQ(DecideCopy(secondHour, local, local, firstHour), Copy);
    EXPECT_EQ(DecideCopy(secondHour, {local.milliseconds - 60'000}, local, firstHour), Copy);
    EXPECT_EQ(DecideCopy(firstHour, local, local, secondHour), Leave);
}

}  // namespace
