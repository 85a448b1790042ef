#include "Platform/Foundation/NotificationCenter.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

/// The order of the calls, which the macOS center leaves open.
class NotificationCenterOrder : public testing::Test {
protected:
    NS::NotificationCenter center = NS::NotificationCenter::defaultCenter();
    std::vector<std::string> calls;

    ~NotificationCenterOrder() override {
        for (const auto& observer : observers_) {
            center.removeObserver(observer);
        }
    }

    NS::Observer observe(const std::string& name, std::function<void(const NS::Notification&)> block) {
        observers_.push_back(center.addObserverForName(name, std::move(block)));
        return observers_.back();
    }

    NS::Observer record(const std::string& name, const std::string& call) {
        return observe(name, [this, call](const NS::Notification&) { calls.push_back(call); });
    }

private:
    std::vector<NS::Observer> observers_;
};

TEST_F(NotificationCenterOrder, CallsEveryObserverOfTheNameInTheirOrder) {
    record("news", "first");
    record("other", "wrong");
    record("news", "second");
    center.postNotificationName("news");
    EXPECT_EQ(calls, (std::vector<std::string>{"first", "second"}));
    center.postNotificationName("nobody's");
    EXPECT_EQ(calls.size(), 2U);
}

TEST_F(NotificationCenterOrder, AnObserverRemovedByAnEarlierOneIsNotCalledByTheSamePost) {
    NS::Observer second;
    observe("news", [&](const NS::Notification&) { center.removeObserver(second); });
    second = record("news", "second");
    center.postNotificationName("news");
    EXPECT_EQ(calls, std::vector<std::string>());
}

TEST_F(NotificationCenterOrder, AnObserverMayRemoveItself) {
    NS::Observer once;
    once = observe("news", [&](const NS::Notification&) {
        center.removeObserver(once);
        calls.push_back("once");
    });
    record("news", "always");
    center.postNotificationName("news");
    center.postNotificationName("news");
    EXPECT_EQ(calls, (std::vector<std::string>{"once", "always", "always"}));
}

} // namespace
