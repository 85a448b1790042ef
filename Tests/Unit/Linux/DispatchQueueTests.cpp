#include "Platform/Dispatch/DispatchQueue.h"

#include "Platform/Linux/Dispatch/Workers.h"
#include "Seam/Clock.h"

#include <QCoreApplication>
#include <QThread>
#include <atomic>
#include <filesystem>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <thread>

namespace {

using namespace std::chrono_literals;

bool isMainThread() {
    return QThread::currentThread() == QCoreApplication::instance()->thread();
}

TEST(DispatchQueue, TheMainQueueRunsItsBlocksInOrderOnTheMainThread) {
    std::string order;
    std::thread([&] {
        for (const char letter : {'a', 'b', 'c'}) {
            NS::DispatchQueue::main().async([&order, letter] { order += isMainThread() ? letter : '?'; });
        }
    }).join();
    EXPECT_EQ(order, "");
    QCoreApplication::processEvents();
    EXPECT_EQ(order, "abc");
}

TEST(DispatchQueue, TheMainQueueNeverRunsABlockAtOnce) {
    bool ran = false;
    NS::DispatchQueue::main().async([&] { ran = true; });
    EXPECT_FALSE(ran);
}

TEST(DispatchQueue, TheGlobalQueueRunsItsBlocksElsewhereAndAtTheSameTime) {
    std::atomic<int> running = 0;
    std::atomic<bool> met = false;
    for (int count = 0; count < 2; ++count) {
        NS::DispatchQueue::global().async([&] {
            EXPECT_FALSE(isMainThread());
            ++running;
            for (int round = 0; round < 500 && running < 2; ++round) {
                std::this_thread::sleep_for(10ms);
            }
            met = met || running == 2;
        });
    }
    EXPECT_TRUE(Linux::waitForWorkers(10s));
    EXPECT_TRUE(met);
}

TEST(DispatchQueue, NoThreadAndNothingThatABlockHoldsIsLeftBehind) {
    const auto threads = [] { return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {}); };
    const auto before = threads();
    const auto kept = std::make_shared<int>();
    for (int count = 0; count < 50; ++count) {
        NS::DispatchQueue::global().async([kept] {});
    }
    EXPECT_TRUE(Linux::waitForWorkers(10s));
    EXPECT_EQ(kept.use_count(), 1);
    for (int round = 0; round < 500 && threads() != before; ++round) { // a thread ends a moment after its work
        std::this_thread::sleep_for(10ms);
    }
    EXPECT_EQ(threads(), before);
}

TEST(DispatchQueue, WaitingForWorkersHasAnEnd) {
    std::atomic<bool> stop = false;
    NS::DispatchQueue::global().async([&] {
        while (!stop) {
            std::this_thread::sleep_for(5ms);
        }
    });
    EXPECT_FALSE(Linux::waitForWorkers(50ms));
    stop = true;
    EXPECT_TRUE(Linux::waitForWorkers(10s));
}

TEST(DispatchQueue, ADelayedBlockWaitsForItsTime) {
    const auto start = NS::Date::date();
    int runs = 0;
    NS::DispatchQueue::main().asyncAfter(12, [&] { runs += isMainThread(); });
    Seam::runUntil(start.dateByAddingTimeInterval(11.9));
    QCoreApplication::processEvents();
    EXPECT_EQ(runs, 0);
    Seam::runUntil(start.dateByAddingTimeInterval(12));
    QCoreApplication::processEvents();
    EXPECT_EQ(runs, 1);
    Seam::runUntil(start.dateByAddingTimeInterval(100));
    QCoreApplication::processEvents();
    EXPECT_EQ(runs, 1);
}

} // namespace
