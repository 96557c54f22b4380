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

}  // namespace
