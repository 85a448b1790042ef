#include "Platform/Linux/Seam.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <QTimer>
#include <chrono>
#include <cmath>
#include <sys/timerfd.h>
#include <unistd.h>

namespace Linux {

namespace {

/// By the kernel's wall clock, which goes on while the machine sleeps and follows when it is set: nothing to re-arm.
class TimerDescriptor : public Alarm {
public:
    TimerDescriptor(const Date& date, std::function<void()> callback)
        : descriptor_(timerfd_create(CLOCK_REALTIME, TFD_CLOEXEC | TFD_NONBLOCK)),
          notifier_(descriptor_, QSocketNotifier::Read) {
        QObject::connect(&notifier_, &QSocketNotifier::activated, &notifier_, [this, callback = std::move(callback)] {
            notifier_.setEnabled(false);
            const auto last = callback; // which may destroy this alarm
            last();
        });
        const itimerspec setting = {.it_interval = {}, .it_value = timespecOf(date)};
        timerfd_settime(descriptor_, TFD_TIMER_ABSTIME, &setting, nullptr);
    }

    ~TimerDescriptor() override {
        notifier_.setEnabled(false);
        close(descriptor_);
    }

private:
    // Rounded up, so that the time has come when the alarm goes; and never zero, which would disarm it.
    static timespec timespecOf(const Date& date) {
        const double nanoseconds = std::ceil(date.timeIntervalSince1970() * 1e9);
        if (nanoseconds < 1) {
            return {.tv_sec = 0, .tv_nsec = 1};
        }
        const double seconds = std::floor(nanoseconds / 1e9);
        return {.tv_sec = static_cast<time_t>(seconds), .tv_nsec = static_cast<long>(nanoseconds - seconds * 1e9)};
    }

    const int descriptor_;
    QSocketNotifier notifier_;
};

} // namespace

Date now() {
    const std::chrono::duration<double> sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return Date::dateWithTimeIntervalSince1970(sinceEpoch.count());
}

std::unique_ptr<Alarm> makeAlarm(const Date& date, std::function<void()> callback) {
    return std::make_unique<TimerDescriptor>(date, std::move(callback));
}

void callAfter(double seconds, std::function<void()> callback) {
    const auto delay = std::chrono::ceil<std::chrono::milliseconds>(std::chrono::duration<double>(seconds));
    QTimer::singleShot(delay, Qt::PreciseTimer, QCoreApplication::instance(), std::move(callback));
}

} // namespace Linux
