#include "support/path_digest.h"

#include <gtest/gtest.h>

namespace {

constexpr char kText[] =
    "000110F0A5FF7E8001234567"
    "89ABCDEF00000000000000000000000000000042";

TEST(PathDigest, TextIsUpperCaseFirstByteFirst) {
    const auto digest = FromPathHashText(kText);
    ASSERT_TRUE(digest);
    EXPECT_EQ(digest->bytes[1], 0x01);
    EXPECT_EQ(digest->bytes[3], 0xF0);
    EXPECT_EQ(digest->bytes[31], 0x42);
    EXPECT_EQ(ToPathHashText(*digest), kText);
}

TEST(PathDigest, RefusesOtherTexts) {
    const std::string text = kText;
    EXPECT_FALSE(FromPathHashText(""));
    EXPECT_FALSE(FromPathHashText(text.substr(1)));
    EXPECT_FALSE(FromPathHashText(text + "0"));
    for (const char wrong : {'a', 'g', 'G', '@', '/', ':', ' ', '\0', '\xC4'}) {
        for (const std::size_t place : {std::size_t{0}, std::size_t{33}, std::size_t{63}}) {
            std::string changed = text;
            changed[place] = wrong;
            EXPECT_FALSE(FromPathHashText(changed)) << wrong << " at " << place;
        }
    }
}

// The index of the hash table sorts digests where the table's file sorts texts.
TEST(PathDigest, OrdersAsItsTextDoes) {
    TPathDigest low;
    TPathDigest high;
    low.bytes[7] = 0x7F;
    high.bytes[7] = 0x80;
    EXPECT_LT(low, high);
    EXPECT_LT(ToPathHashText(low), ToPathHashText(high));
}

}  // namespace
