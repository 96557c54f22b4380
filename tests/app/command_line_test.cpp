#include "app/command_line.h"

#include <gtest/gtest.h>

namespace {

TEST(CommandLine, FindsWholeWordsInAnyCaseAndOrder) {
    for (const wchar_t* copy : {L"/COPY", L"/copy", L"/Copy"}) {
        const TCommandLine line = ParseCommandLine({L"/shutdown", L"unknown", copy, L"/MsgOff"});
        EXPECT_TRUE(line.copy && line.shutDown && line.msgOff);
    }
    for (const wchar_t* other : {L"-COPY", L"COPY", L"/COPY=1", L"/COPYING", L"/COP", L" /COPY", L"/ÇOPY"}) {
        EXPECT_FALSE(ParseCommandLine({other}).copy);
    }
}

TEST(CommandLine, MeansNothingWithoutCopy) {
    const TCommandLine line = ParseCommandLine({L"/SHUTDOWN", L"/MSGOFF"});
    EXPECT_FALSE(line.copy || line.shutDown || line.msgOff);
}

TEST(CommandLine, AsksForChecksInWholeWords) {
    const TCommandLine part = ParseCommandLine({L"/verify=7", L"/Repair", L"/SHUTDOWN"});
    ASSERT_TRUE(part.check && part.IsUnattended());
    EXPECT_TRUE(!part.copy && !part.shutDown && part.check->percent == 7 && part.check->repair);
    EXPECT_EQ(ParseCommandLine({L"/VERIFY=99", L"/VERIFY", L"/VERIFY=3"}).check->percent, 100U);
    for (const wchar_t* other : {L"/VERIFY=0", L"/VERIFY=100", L"/VERIFY=07", L"/VERIFY=", L"/VERIFY=1x",
                                 L"/VERIFIED", L"-VERIFY", L"/REPAIR"}) {
        EXPECT_FALSE(ParseCommandLine({other}).IsUnattended()) << other;
    }
}

}  // namespace
