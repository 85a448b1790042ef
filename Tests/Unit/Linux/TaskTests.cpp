#include "Platform/Foundation/Task.h"

#include <QTemporaryDir>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <thread>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

NS::Task shell(const std::string& script, const std::vector<std::string>& arguments = {}) {
    auto task = NS::Task::init();
    task.setExecutableURL(NS::URL::fileURLWithPath("/bin/sh"));
    std::vector<std::string> words = {"-c", script};
    words.insert(words.end(), arguments.begin(), arguments.end());
    task.setArguments(words);
    return task;
}

int statusOf(NS::Task task) {
    EXPECT_TRUE(task.launchAndReturnError());
    task.waitUntilExit();
    return task.terminationStatus();
}

struct TaskTest : testing::Test {
    std::string written() const {
        std::ifstream stream(file);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    /// The children of this process that have ended and wait to be collected.
    static int zombies() {
        int count = 0;
        for (const auto& process : fs::directory_iterator("/proc/self/task/" + std::to_string(getpid()))) {
            if (process.path().filename() != "children") {
                continue;
            }
            std::ifstream children(process.path());
            for (std::string child; children >> child;) {
                std::ifstream stat("/proc/" + child + "/stat");
                std::string number, name, state;
                stat >> number >> name >> state;
                count += state == "Z";
            }
        }
        return count;
    }

    QTemporaryDir home;
    const std::string file = home.path().toStdString() + "/out put";
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

TEST_F(TaskTest, AChildHasNoOpenFilesButTheThreeStreams) {
    EXPECT_EQ(statusOf(shell("ls /proc/self/fd > \"$0\"", {file})), 0);
    EXPECT_EQ(written(), "0\n1\n2\n3\n"); // 3 is the listing's own
}

TEST_F(TaskTest, AChildStartsWithNoSignalBlockedOrIgnored) {
    std::signal(SIGTERM, SIG_IGN);
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, nullptr);
    EXPECT_EQ(statusOf(shell("kill -TERM $$; sleep 1")), SIGTERM);
}

TEST_F(TaskTest, AChildOutlivesItsHandle) {
    ASSERT_TRUE(shell("sleep 0.3; echo done > \"$0\"", {file}).launchAndReturnError());
    EXPECT_EQ(written(), "");
    for (int round = 0; round < 100 && written().empty(); ++round) {
        std::this_thread::sleep_for(50ms);
    }
    EXPECT_EQ(written(), "done\n");
}

TEST_F(TaskTest, ChildrenThatNobodyWaitedForAreCollectedByTheNextLaunch) {
    for (int round = 0; round < 20; ++round) {
        ASSERT_TRUE(shell("exit 0").launchAndReturnError());
    }
    std::this_thread::sleep_for(300ms);
    EXPECT_EQ(statusOf(shell("exit 0")), 0);
    EXPECT_EQ(zombies(), 0);
}

} // namespace
