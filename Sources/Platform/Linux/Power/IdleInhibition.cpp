#include "Platform/Linux/Power/IdleInhibition.h"

#include "Platform/Linux/CurrentDesktop.h"

#include <algorithm>
#include <chrono>
#include <vector>

namespace Linux {

namespace {

using namespace std::chrono_literals;

constexpr auto longestWait = 1000ms;

} // namespace

IdleInhibition::IdleInhibition()
    : all_{{
          // The saver and the lock of whoever owns the name; on GNOME, Cinnamon and Plasma the suspend too.
          {&screenSaver_, true},
          // Saver, lock and suspend of MATE, GNOME and Cinnamon.
          {&sessionManager_, true},
          // Only the suspend, by Xfce's power manager and Plasma's: the screen would go.
          {&powerManagement_, false},
          // Only what the session's own programs make of it: all on Plasma, nothing on MATE, LXQt, Xfce and weston.
          {&login_, isCurrentDesktop("KDE")},
          // All that the compositor calls idle.
          {&wayland_, true},
          // The X server's screen saver and power saving.
          {&xSaver_, true},
          // What acts on the X server's idle time: LXQt, xautolock, xscreensaver.
          {&xIdleReset_, true},
      }} {
    for (const auto& means : all_) {
        means.inhibitor->changed = [this] { xIdleReset_.setNeeded(!isIdleTimeCovered()); };
    }
}

void IdleInhibition::prepare() {
    for (const auto& means : all_) {
        means.inhibitor->prepare();
    }
}

bool IdleInhibition::hold(const QString& application, const QString& reason) {
    for (const auto& means : all_) {
        means.inhibitor->ask(application, reason);
    }
    waitForAnswer();
    qCDebug(powerLog) << (isHeld() ? "the session is held" : "nothing holds the session");
    if (!isHeld()) {
        release();
        return false;
    }
    return true;
}

void IdleInhibition::release() {
    for (const auto& means : all_) {
        means.inhibitor->release();
    }
}

bool IdleInhibition::isHeld() const {
    return std::ranges::any_of(all_, [](const Means& means) { return means.isEnough && means.inhibitor->isGranted(); });
}

// Where these hold, no program of the desktop's own acts on the X server's idle time.
bool IdleInhibition::isIdleTimeCovered() const {
    return sessionManager_.isGranted() || (isCurrentDesktop("KDE") && screenSaver_.isGranted());
}

void IdleInhibition::waitForAnswer() {
    const auto end = std::chrono::steady_clock::now() + longestWait;
    while (!isHeld()) {
        std::vector<pollfd> descriptors;
        std::vector<IdleInhibitor*> waiting;
        for (const auto& means : all_) {
            if (const auto awaited = means.inhibitor->awaited(); awaited && means.isEnough) {
                descriptors.push_back(*awaited);
                waiting.push_back(means.inhibitor);
            }
        }
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
        if (descriptors.empty() || left <= 0ms) {
            return;
        }
        poll(descriptors.data(), descriptors.size(), static_cast<int>(left.count()));
        for (auto* inhibitor : waiting) {
            inhibitor->process();
        }
    }
}

} // namespace Linux
