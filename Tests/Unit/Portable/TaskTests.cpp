#include "Platform/Foundation/Task.h"

#include "Support/Files.h"
#include "Support/Shell.h"
#include "Support/TemporaryFolder.h"

#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <string>
#include <thread>

namespace {

using namespace std::chrono_literals;

struct TaskTest : testing::Test {
    std::string written() const { return read(file); }

    const TemporaryFolder folder;
    const std::string file = folder.path() / "out put";
};

TEST_F(TaskTest, TheExitStatusIsTheChilds) {
    EXPECT_EQ(statusOf(shell("exit 0")), 0);
    EXPECT_EQ(statusOf(shell("exit 7")), 7);
}

TEST_F(TaskTest, AChildThatASignalEndsHasItsNumberForStatus) {
    EXPECT_EQ(statusOf(shell("kill -TERM $$")), SIGTERM);
}

TEST_F(TaskTest, ArgumentsArriveAsTheyStand) {
    EXPECT_EQ(statusOf(shell("printf '%s|' \"$@\" > \"$0\"", {file, "a b", "", "$HOME", "\"'", "*", "é\n"})), 0);
    EXPECT_EQ(written(), "a b||$HOME|\"'|*|é\n|");
}

TEST_F(TaskTest, WhatCannotBeStartedSaysSo) {
    for (const char* path : {"/nowhere/tool", "/etc/passwd", "/"}) {
        auto task = NS::Task::init();
        task.setExecutableURL(NS::URL::fileURLWithPath(path));
        EXPECT_FALSE(task.launchAndReturnError()) << path;
    }
}

TEST_F(TaskTest, TheNullDeviceSwallowsOutputAndError) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    auto task = shell("echo out; echo err >&2");
    task.setStandardOutput(NS::FileHandle::fileHandleWithNullDevice());
    task.setStandardError(NS::FileHandle::fileHandleWithNullDevice());
    EXPECT_EQ(statusOf(task), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr(), "");
}

TEST_F(TaskTest, OtherwiseOutputAndErrorAreThisProcesss) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    EXPECT_EQ(statusOf(shell("echo out; echo err >&2")), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "out\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "err\n");
}

TEST_F(TaskTest, AChildOutlivesItsHandle) {
    ASSERT_TRUE(shell("sleep 0.3; echo done > \"$0\"", {file}).launchAndReturnError());
    EXPECT_EQ(written(), "");
    for (int round = 0; round < 100 && written().empty(); ++round) {
        std::this_thread::sleep_for(50ms);
    }
    EXPECT_EQ(written(), "done\n");
}

} // namespace
