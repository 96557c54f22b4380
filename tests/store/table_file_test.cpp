#include "store/table_file.h"

#include <gmock/gmock.h>

#include <limits>

#include "support/latin1_code_page.h"

namespace {

// Midnight at the start of a day, in days since 30 December 1899.
constexpr TDateTime Midnight(std::int64_t day) {
    return {day * kMillisecondsPerDay};
}

TEST(TableFileDate, EveryMillisecondOfADayComesBack) {
    const auto differing = [](std::int64_t day, std::int64_t step) {
        std::int64_t count = 0;
        for (std::int64_t millisecond = 0; millisecond < kMillisecondsPerDay; millisecond += step) {
            const TDateTime date{day * kMillisecondsPerDay + millisecond};
            count += FromFileTime(ToFileTime(date)) != date;
        }
        return count;
    };
    EXPECT_EQ(differing(45000, 1), 0);
    for (const std::int64_t day : {-693593, -1, 0, 1, 36526, 2958465}) {
        EXPECT_EQ(differing(day, 997), 0) << "day " << day;
    }
}

TEST(TableFileDate, CountsMillisecondsFromTheDayBeforeYearOne) {
    EXPECT_EQ(ToFileTime(ToDateTime({2000, 1, 1, 12, 0, 0, 0})), 63082411200000.0);
    EXPECT_EQ(ToFileTime(TDateTime{}), 693594.0 * 86400000.0);
}

TEST(TableFileDate, TakesOnlyWholeMillisecondsOfTheCalendar) {
    EXPECT_EQ(FromFileTime(kEarliestFileTime), ToDateTime({1, 1, 1, 0, 0, 0, 0}));
    EXPECT_EQ(FromFileTime(kEndOfFileTimes - 1), ToDateTime({32767, 12, 31, 23, 59, 59, 999}));
    for (const double value :
         {kEarliestFileTime - 1, kEndOfFileTimes, 63082411200000.5, 0.0, -1.0, 1e300,
          std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
          std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_EQ(FromFileTime(value), std::nullopt) << value;
    }
}

TEST(TableFileText, UsesTheCodePageWhereItCanAndMarkedUtf8Elsewhere) {
    const TLatin1CodePage codePage;
    EXPECT_EQ(EncodeTableText(codePage, L"C:\\M\u00E4rz"), "C:\\M\xE4rz");
    EXPECT_EQ(EncodeTableText(codePage, L"D:\\\u4E2D\u6587"),
              std::string("\0D:\\\xE4\xB8\xAD\xE6\x96\x87", 10));

    using namespace std::string_literals;
    for (const std::wstring& text :
         {L""s, L"D:\\\u4E2D\u6587"s, L"\0x"s, L"a\0b"s, std::wstring(255, L'\u4E2D')}) {
        EXPECT_EQ(DecodeTableText(codePage, EncodeTableText(codePage, text), 255), text);
    }
}

TEST(TableFileText, RefusesTextsThatAreTooLongOrNoUtf8) {
    const TLatin1CodePage codePage;
    EXPECT_TRUE(DecodeTableText(codePage, "NO__5", 5));
    EXPECT_FALSE(DecodeTableText(codePage, "NO___6", 5));
    EXPECT_FALSE(DecodeTableText(codePage, EncodeTableText(codePage, std::wstring(6, L'\u4E2D')), 5));
    EXPECT_FALSE(DecodeTableText(codePage, std::string_view("\0\xE4\xB8", 3), 5));
}

}  // namespace
