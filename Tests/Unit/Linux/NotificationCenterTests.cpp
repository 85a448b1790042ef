#include "Platform/Foundation/NotificationCenter.h"

#include "Support/Observing.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

/// The order of the calls, which the macOS center leaves open.
class NotificationCenterOrder : public Observing {};

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
