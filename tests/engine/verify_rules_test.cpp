#include "engine/verify_rules.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace {

TEST(VerifySlice, NightAfterNightEveryFileHasItsTurn) {
    std::mt19937 random(5);
    std::vector<TPathDigest> paths(5000);
    for (TPathDigest& path : paths) {
        std::ranges::generate(path.bytes, [&] { return static_cast<std::uint8_t>(random()); });
    }
    for (const unsigned percent : {1U, 7U, 30U, 50U, 99U, 100U}) {
        TVerifySlice slice{.first = 42, .percent = percent};
        std::vector<int> seen(paths.size());
        for (unsigned night = 0; night < (100 + percent - 1) / percent; ++night) {
            std::size_t held = 0;
            for (std::size_t index = 0; index < paths.size(); ++index) {
                seen[index] += slice.Holds(paths[index]) ? 1 : 0;
                held += slice.Holds(paths[index]) ? 1 : 0;
            }
            EXPECT_NEAR(static_cast<double>(held), percent * 50.0, 110.0);
            slice.first = slice.Next();
        }
        EXPECT_GE(std::ranges::min(seen), 1) << percent;
        EXPECT_LE(std::ranges::max(seen), 2) << percent;
    }
}

TEST(VerifyStep, OnlyWhatARunWouldLeaveAloneIsRead) {
    const auto state = [](std::int64_t seconds, std::int64_t size) {
        return TFileState{.written = {seconds * 1000}, .size = size};
    };
    const TDateTime local{5'000'000};
    const auto step = [&](std::optional<TDateTime> recorded, std::optional<TFileState> copy,
                          bool recordsAreKnown = true) {
        return NextVerifyStep(state(1001, 10), local, recorded, copy, recordsAreKnown);
    };
    EXPECT_EQ(step(local, state(1001, 10)), TVerifyStep::ReadBoth);
    EXPECT_EQ(step(std::nullopt, state(1002, 10)), TVerifyStep::ReadBoth) << "a destination that rounds";
    EXPECT_EQ(step(local, state(9000, 10)), TVerifyStep::ReadBoth) << "somebody saved the copy";
    EXPECT_EQ(step(local, state(1001, 9)), TVerifyStep::WrongSize);
    EXPECT_EQ(step(local, state(9000, 11)), TVerifyStep::WrongSize);
    EXPECT_EQ(step(local, state(500, 11)), TVerifyStep::ToBeCopied);
    EXPECT_EQ(step(TDateTime{4'000'123}, state(1002, 10)), TVerifyStep::ToBeCopied) << "an older record";
    EXPECT_EQ(step(local, std::nullopt), TVerifyStep::Missing);
    EXPECT_EQ(step(std::nullopt, std::nullopt), TVerifyStep::ToBeCopied) << "came after the last run";
    EXPECT_EQ(step(std::nullopt, std::nullopt, false), TVerifyStep::Missing) << "no table can say so";
}

TBlockReader ReaderOf(const std::vector<std::byte>& bytes, std::size_t failsAt) {
    return [&bytes, failsAt, at = std::size_t{0}](std::span<std::byte> block, std::size_t& read) mutable {
        read = std::min(block.size(), bytes.size() - at);
        std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), read, block.begin());
        at += read;
        return at > failsAt ? TErrorCode{23} : TErrorCode{0};
    };
}

TEST(CompareStreams, FindsTheFirstDifferenceOrWhyThereIsNoAnswer) {
    constexpr std::size_t kNever = 1'000'000;
    using TEnd = TStreamComparison::TEnd;
    std::mt19937 random(11);
    std::vector<std::byte> sourceBlock(16);
    std::vector<std::byte> copyBlock(16);
    const auto compare = [&](const auto& source, const auto& copy, std::size_t sourceFails,
                             std::size_t copyFails) {
        return CompareStreams(ReaderOf(source, sourceFails), sourceBlock, ReaderOf(copy, copyFails),
                              copyBlock, [](std::size_t) { return true; });
    };
    for (std::size_t size = 0; size < 70; ++size) {
        std::vector<std::byte> source(size);
        std::ranges::generate(source, [&] { return static_cast<std::byte>(random()); });
        EXPECT_EQ(compare(source, source, kNever, kNever).end, TEnd::Same);
        for (std::size_t at = 0; at < size; ++at) {
            std::vector<std::byte> copy = source;
            copy[at] ^= static_cast<std::byte>(1U << random() % 8);
            const TStreamComparison found = compare(source, copy, kNever, kNever);
            EXPECT_TRUE(found.end == TEnd::Different && found.same == at) << size << " " << at;
            copy = source;
            copy.resize(at);
            EXPECT_EQ(compare(source, copy, kNever, kNever).end, TEnd::Different) << "cut off at " << at;
            EXPECT_EQ(compare(copy, source, kNever, kNever).end, TEnd::Different) << "longer than " << at;
            EXPECT_EQ(compare(source, source, at, kNever).end, TEnd::SourceFailed);
            EXPECT_EQ(compare(source, source, kNever, at).end, TEnd::CopyFailed);
        }
    }
    const std::vector<std::byte> zeros(100);
    EXPECT_EQ(CompareStreams(ReaderOf(zeros, kNever), sourceBlock, ReaderOf(zeros, kNever), copyBlock,
                             [](std::size_t) { return false; })
                  .end,
              TEnd::Stopped);
}

}  // namespace
