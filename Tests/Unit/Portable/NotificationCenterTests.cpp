#include "Platform/Foundation/NotificationCenter.h"

#include "Support/Observing.h"

#include <atomic>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

class NotificationCenter : public Observing {};

TEST_F(NotificationCenter, IsOne) {
    EXPECT_EQ(center, NS::NotificationCenter::defaultCenter());
}

TEST_F(NotificationCenter, ABlockGetsTheNameAndRunsOnThePostingThread) {
    std::string name;
    std::thread::id thread;
    observe("news", [&](const NS::Notification& notification) {
        name = notification.name;
        thread = std::this_thread::get_id();
    });
    std::thread::id posting;
    std::thread([&] {
        posting = std::this_thread::get_id();
        center.postNotificationName("news");
    }).join();
    EXPECT_EQ(name, "news");
    EXPECT_EQ(thread, posting);
}

TEST_F(NotificationCenter, ARemovedObserverIsNotCalled) {
    const auto first = record("news", "first");
    record("news", "second");
    center.removeObserver(first);
    center.removeObserver(first);
    center.removeObserver(NS::Observer());
    center.postNotificationName("news");
    EXPECT_EQ(calls, std::vector<std::string>{"second"});
}

TEST_F(NotificationCenter, AnObserverAddedByAnObserverWaitsForTheNextPost) {
    bool isAdded = false;
    observe("news", [&](const NS::Notification&) {
        if (!std::exchange(isAdded, true)) {
            record("news", "added");
        }
    });
    center.postNotificationName("news");
    EXPECT_EQ(calls, std::vector<std::string>());
    center.postNotificationName("news");
    EXPECT_EQ(calls, std::vector<std::string>{"added"});
}

TEST_F(NotificationCenter, AnObserverMayPost) {
    observe("news", [&](const NS::Notification&) { center.postNotificationName("more"); });
    record("more", "more");
    center.postNotificationName("news");
    EXPECT_EQ(calls, std::vector<std::string>{"more"});
}

TEST_F(NotificationCenter, TheBlockIsGivenUpWithTheRegistration) {
    auto captured = std::make_shared<int>(0);
    const std::weak_ptr<int> watch = captured;
    const auto observer = observe("news", [captured = std::move(captured)](const NS::Notification&) { ++*captured; });
    EXPECT_FALSE(watch.expired());
    center.removeObserver(observer); // which is still held here
    EXPECT_TRUE(watch.expired());
}

TEST_F(NotificationCenter, ABlocksDestructionMayUseTheCenter) {
    const auto other = record("news", "other");
    std::shared_ptr<void> guard(nullptr, [this, other](void*) { center.removeObserver(other); });
    const auto observer = observe("news", [guard = std::move(guard)](const NS::Notification&) {});
    center.removeObserver(observer);
    center.postNotificationName("news");
    EXPECT_EQ(calls, std::vector<std::string>());
}

TEST_F(NotificationCenter, ThreadsMayAddPostAndRemoveAtOnce) {
    std::atomic<int> count = 0;
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([&] {
            for (int round = 0; round < 200; ++round) {
                const auto observer = center.addObserverForName("news", [&](const NS::Notification&) { ++count; });
                center.postNotificationName("news");
                center.removeObserver(observer);
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_GE(count, 4 * 200);
    const int before = count;
    center.postNotificationName("news");
    EXPECT_EQ(count, before);
}

} // namespace
