#include "StatusItemController.h"

#include <gtest/gtest.h>

namespace {

using NS::Event;
using NS::EventModifierFlags;
using NS::EventType;

constexpr unsigned long none = 0;
constexpr unsigned long left = 1;
constexpr unsigned long right = 2;

bool opensMenu(const std::optional<Event>& event, unsigned long pressed,
               EventModifierFlags modifiers = EventModifierFlags::None) {
    return StatusItemController::wantsMenu(event, [=] { return pressed; }, [=] { return modifiers; });
}

TEST(StatusItemClick, AMouseUpIsJudgedByItself) {
    EXPECT_TRUE(opensMenu(Event{EventType::RightMouseUp}, none));
    EXPECT_TRUE(opensMenu(Event{EventType::LeftMouseUp, EventModifierFlags::Control}, none));
    EXPECT_TRUE(
        opensMenu(Event{EventType::LeftMouseUp, EventModifierFlags::Control | EventModifierFlags::Shift}, none));
    EXPECT_FALSE(opensMenu(Event{EventType::LeftMouseUp, EventModifierFlags::Shift}, none));
    EXPECT_FALSE(opensMenu(Event{EventType::LeftMouseUp}, none));
    EXPECT_FALSE(opensMenu(Event{EventType::LeftMouseUp}, right, EventModifierFlags::Control));
}

TEST(StatusItemClick, WhatIsHeldDownIsNotAskedForAfterAMouseUp) {
    int questions = 0;
    const auto buttons = [&] {
        ++questions;
        return none;
    };
    const auto modifiers = [&] {
        ++questions;
        return EventModifierFlags::None;
    };
    for (const auto type : {EventType::LeftMouseUp, EventType::RightMouseUp}) {
        StatusItemController::wantsMenu(Event{type}, buttons, modifiers);
    }
    EXPECT_EQ(questions, 0);
}

TEST(StatusItemClick, AnotherEventIsJudgedByWhatIsHeldDown) {
    for (const auto type : {EventType::MouseMoved, EventType::LeftMouseDown, EventType::RightMouseDown}) {
        EXPECT_TRUE(opensMenu(Event{type}, right));
        EXPECT_TRUE(opensMenu(Event{type}, left | right));
        EXPECT_TRUE(opensMenu(Event{type}, left, EventModifierFlags::Control));
        EXPECT_TRUE(opensMenu(Event{type}, none, EventModifierFlags::Control | EventModifierFlags::Shift));
        EXPECT_FALSE(opensMenu(Event{type}, left));
        EXPECT_FALSE(opensMenu(Event{type}, none, EventModifierFlags::Command));
    }
}

TEST(StatusItemClick, WithoutAnEventItToggles) {
    EXPECT_FALSE(opensMenu(std::nullopt, none));
    EXPECT_FALSE(opensMenu(std::nullopt, right));
    EXPECT_FALSE(opensMenu(std::nullopt, none, EventModifierFlags::Control));
}

} // namespace
