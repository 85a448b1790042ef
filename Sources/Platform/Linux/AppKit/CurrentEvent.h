#pragma once

#include "Platform/AppKit/Event.h"

#include <optional>

namespace Linux {

/// Makes `event` the application's current one for the life of this object.
class CurrentEvent {
public:
    explicit CurrentEvent(const NS::Event& event);
    ~CurrentEvent();
    CurrentEvent(const CurrentEvent&) = delete;
    CurrentEvent& operator=(const CurrentEvent&) = delete;

private:
    std::optional<NS::Event> outer_;
};

} // namespace Linux
