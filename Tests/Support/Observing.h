#pragma once

#include "Platform/Foundation/NotificationCenter.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

/// Observers at the default center that are removed when the test ends.
class Observing : public testing::Test {
protected:
    NS::NotificationCenter center = NS::NotificationCenter::defaultCenter();
    std::vector<std::string> calls;

    ~Observing() override {
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
