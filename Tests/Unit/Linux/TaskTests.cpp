#include "Platform/Foundation/Task.h"

#include "Support/Files.h"
#include "Support/Shell.h"
#include "Support/TemporaryFolder.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

struct ChildProcess : testing::Test {
    std::string written() const { return read(file); }

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

    const TemporaryFolder folder;
    const std::string file = folder.path() / "out put";
};

TEST_F(ChildProcess, AChildHasNoOpenFilesButTheThreeStreams) {
    EXPECT_EQ(statusOf(shell("ls /proc/self/fd > \"$0\"", {file})), 0);
    EXPECT_EQ(written(), "0\n1\n2\n3\n"); // 3 is the listing's own
}

TEST_F(ChildProcess, AChildStartsWithNoSignalBlockedOrIgnored) {
    std::signal(SIGTERM, SIG_IGN);
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, nullptr);
    EXPECT_EQ(statusOf(shell("kill -TERM $$; sleep 1")), SIGTERM);
}

TEST_F(ChildProcess, ChildrenThatNobodyWaitedForAreCollectedByTheNextLaunch) {
    for (int round = 0; round < 20; ++round) {
        ASSERT_TRUE(shell("exit 0").launchAndReturnError());
    }
    std::this_thread::sleep_for(300ms);
    EXPECT_EQ(statusOf(shell("exit 0")), 0);
    EXPECT_EQ(zombies(), 0);
}

} // namespace
