#include "Platform/Linux/Clock/Sleep.h"
#include "Platform/Linux/Foundation/Files.h"
#include "Platform/Linux/Seam.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <QTimer>
#include <chrono>
#include <cmath>
#include <sys/timerfd.h>

namespace Linux {

namespace {

// Rounded up, so that the time has come when the alarm goes; and never zero, which would disarm it.
timespec timespecOf(double seconds) {
    const double nanoseconds = std::ceil(seconds * 1e9);
    if (nanoseconds < 1) {
        return {.tv_sec = 0, .tv_nsec = 1};
    }
    const double whole = std::floor(nanoseconds / 1e9);
    return {.tv_sec = static_cast<time_t>(whole), .tv_nsec = static_cast<long>(nanoseconds - whole * 1e9)};
}

class TimerDescriptor : public Alarm {
public:
    /// `seconds` are on that clock, or from now on without TFD_TIMER_ABSTIME among the `flags`.
    TimerDescriptor(clockid_t clock, int flags, double seconds, std::function<void()> callback)
        : descriptor_(timerfd_create(clock, TFD_CLOEXEC | TFD_NONBLOCK)),
          notifier_(descriptor_.number(), QSocketNotifier::Read), callback_(std::move(callback)) {
        QObject::connect(&notifier_, &QSocketNotifier::activated, &notifier_, [this] { fallDue(); });
        const itimerspec setting = {.it_interval = {}, .it_value = timespecOf(seconds)};
        timerfd_settime(descriptor_.number(), flags, &setting, nullptr);
    }

private:
    void fallDue() {
        notifier_.setEnabled(false);
        if (Sleep::current().isUnderWay()) {
            QObject::connect(
                &Sleep::current(), &Sleep::ended, &notifier_, [this] { goOff(); }, Qt::SingleShotConnection);
        } else {
            goOff();
        }
    }

    void goOff() {
        const auto last = std::move(callback_); // which may destroy this alarm
        last();
    }

    const Descriptor descriptor_;
    QSocketNotifier notifier_;
    std::function<void()> callback_;
};

} // namespace

Date now() {
    const std::chrono::duration<double> sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return Date::dateWithTimeIntervalSince1970(sinceEpoch.count());
}

// The kernel's wall clock goes on while the machine sleeps and follows when it is set: nothing to re-arm.
std::unique_ptr<Alarm> makeAlarm(const Date& date, std::function<void()> callback) {
    return std::make_unique<TimerDescriptor>(CLOCK_REALTIME, TFD_TIMER_ABSTIME, date.timeIntervalSince1970(),
                                             std::move(callback));
}

std::unique_ptr<Alarm> makeDelay(double seconds, std::function<void()> callback) {
    return std::make_unique<TimerDescriptor>(CLOCK_BOOTTIME, 0, seconds, std::move(callback));
}

void callAfter(double seconds, std::function<void()> callback) {
    const auto delay = std::chrono::ceil<std::chrono::milliseconds>(std::chrono::duration<double>(seconds));
    QTimer::singleShot(delay, Qt::PreciseTimer, QCoreApplication::instance(), std::move(callback));
}

} // namespace Linux
