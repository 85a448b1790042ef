#include "Platform/Foundation/Log.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

std::string logged(const std::string& text) {
    testing::internal::CaptureStderr();
    NS::Log(text);
    return testing::internal::GetCapturedStderr();
}

TEST(Log, ALineSaysWhenAndWho) {
    const std::string who = program_invocation_short_name + ("\\[" + std::to_string(getpid())) + ":[0-9]+\\] ";
    EXPECT_TRUE(testing::internal::RE::FullMatch(
        logged("100% of %s"),
        "[0-9]+-[0-9][0-9]-[0-9][0-9] [0-9][0-9]:[0-9][0-9]:[0-9][0-9]\\.[0-9][0-9][0-9] " + who + "100% of %s\n"))
        << logged("100% of %s");
}

TEST(Log, LinesOfManyThreadsStayWhole) {
    testing::internal::CaptureStderr();
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([number] {
            for (int round = 0; round < 50; ++round) {
                NS::Log(std::string(2000, static_cast<char>('a' + number)));
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    std::istringstream lines(testing::internal::GetCapturedStderr());
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        const auto text = line.substr(line.find("] ") + 2);
        EXPECT_EQ(text, std::string(2000, text.front()));
    }
    EXPECT_EQ(count, 200);
}

} // namespace
