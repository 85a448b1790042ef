#include "Platform/Linux/Clock/Sleep.h"

#include <chrono>

namespace Linux {

namespace {

// A login manager that announces a sleep and is gone afterwards must not hold alarms for ever.
constexpr auto announcementTimeout = std::chrono::seconds(30);

} // namespace

Sleep& Sleep::current() {
    static auto& sleep = *new Sleep; // alarms may outlast the statics
    return sleep;
}

Sleep::Sleep() {
    limit_.setSingleShot(true);
    limit_.setInterval(announcementTimeout);
    connect(&limit_, &QTimer::timeout, this, &Sleep::ended);
}

void Sleep::begin() {
    limit_.start();
}

void Sleep::end() {
    limit_.stop();
    Q_EMIT ended();
}

} // namespace Linux
