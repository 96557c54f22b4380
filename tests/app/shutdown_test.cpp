#include "app/shutdown.h"

#include <gtest/gtest.h>

#include "app/fake_shutdown.h"

namespace {

TEST(Shutdown, AsksForThePrivilegeAndThenForTheShutdown) {
    TFakeShutdown::Reset();
    EXPECT_TRUE(ShutdownSystem(TFakeShutdown::Calls(), L"", L"Bye", 60, true, false));
    EXPECT_EQ(TFakeShutdown::asked,
              (std::vector<std::string>{
                  "OpenProcessToken self 40", "LookupPrivilegeValueW local SeShutdownPrivilege",
                  "AdjustTokenPrivileges 0 1 4711 2 0", "InitiateSystemShutdownW (none), Bye, 60, 1, 0"}));
    TFakeShutdown::Reset();
    EXPECT_TRUE(ShutdownSystem(TFakeShutdown::Calls(), L"\\\\other", L"", 0, false, true));
    EXPECT_EQ(TFakeShutdown::asked.back(), "InitiateSystemShutdownW \\\\other, , 0, 0, 1");
}

TEST(Shutdown, StopsAtTheFirstRefusal) {
    const struct {
        const char* failing;
        std::size_t calls;
    } kCases[] = {{"OpenProcessToken", 1},
                  {"LookupPrivilegeValueW", 2},
                  {"AdjustTokenPrivileges", 3},
                  {"privilege", 3},
                  {"InitiateSystemShutdownW", 4}};
    for (const auto& example : kCases) {
        TFakeShutdown::Reset(example.failing);
        SetLastError(ERROR_FILE_NOT_FOUND);  // left over from something else
        EXPECT_FALSE(ShutdownSystem(TFakeShutdown::Calls(), L"", L"Bye", 60, true, false)) << example.failing;
        EXPECT_EQ(TFakeShutdown::asked.size(), example.calls) << example.failing;
    }
}

}  // namespace
