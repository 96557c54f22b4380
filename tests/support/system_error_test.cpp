#include "support/system_error.h"

#include <windows.h>

#include <gtest/gtest.h>
#include <windows.h>

namespace {

TEST(SystemError, TextEndsWithoutLineBreakAndFullStop) {
    for (const TErrorCode code : {ERROR_FILE_NOT_FOUND, ERROR_ACCESS_DENIED, ERROR_NO_NETWORK}) {
        const std::wstring text = SystemErrorText(code);
        ASSERT_GT(text.size(), 5u);
        EXPECT_GT(text.back(), L' ');
        EXPECT_NE(text.back(), L'.');
    }
}

TEST(SystemError, CodeWithoutTextIsNamed) {
    EXPECT_EQ(SystemErrorText(0x2FFF1234), L"Fehler 805245492");
}

}  // namespace
