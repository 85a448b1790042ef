#include "Platform/Foundation/Log.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>

namespace {

TEST(Log, ControlCharactersCannotBreakTheLine) {
    testing::internal::CaptureStderr();
    NS::Log("one\ntwo\r\nthree\x1b[2Jé\x7f");
    const auto line = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(line.ends_with("] one two  three [2Jé \n")) << line;
    EXPECT_EQ(std::count(line.begin(), line.end(), '\n'), 1) << line;
}

} // namespace
