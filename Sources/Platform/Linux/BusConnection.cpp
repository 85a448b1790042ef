#include "Platform/Linux/BusConnection.h"

#include "Platform/Linux/Logging.h"

#include <cstdint>
#include <cstring>
#include <utility>

namespace Linux {

namespace {

using namespace std::chrono_literals;

constexpr auto hang = 5s; // a bus that refuses us does so at once

} // namespace

bool BusConnection::open() {
    sd_bus* bus = nullptr;
    const int result = kind_ == BusKind::Session ? sd_bus_open_user(&bus) : sd_bus_open_system(&bus);
    if (result < 0) {
        qCDebug(busLog) << purpose_ << "has no bus:" << std::strerror(-result);
        return false;
    }
    qCDebug(busLog) << purpose_ << "connects";
    bus_.reset(bus);
    wasReady_ = false;
    opened_ = std::chrono::steady_clock::now();
    sd_bus_set_method_call_timeout(bus, UINT64_MAX); // none: who hangs is heard when it comes to
    readable_ = notifier(QSocketNotifier::Read);
    writable_ = notifier(QSocketNotifier::Write);
    process();
    return isOpen();
}

std::unique_ptr<QSocketNotifier> BusConnection::notifier(QSocketNotifier::Type type) {
    auto notifier = std::make_unique<QSocketNotifier>(sd_bus_get_fd(get()), type);
    QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(), [this] { process(); });
    return notifier;
}

pollfd BusConnection::readiness() const {
    return {.fd = sd_bus_get_fd(get()), .events = static_cast<short>(sd_bus_get_events(get())), .revents = 0};
}

void BusConnection::process() {
    if (!isOpen() || std::exchange(isProcessing_, true)) { // from a callback: the outer call goes on
        return;
    }
    int result = 0;
    do {
        result = sd_bus_process(get(), nullptr);
    } while (result > 0);
    isProcessing_ = false;
    wasReady_ = wasReady_ || sd_bus_is_ready(get()) > 0;
    if (result < 0) {
        close(-result);
    } else {
        writable_->setEnabled((readiness().events & POLLOUT) != 0);
    }
}

void BusConnection::close(int error) {
    qCDebug(busLog) << purpose_ << "lost its bus:" << std::strerror(error);
    for (auto* notifier : {&readable_, &writable_}) {
        (*notifier)->setEnabled(false);
        notifier->release()->deleteLater(); // it may be calling
    }
    bus_.reset();
    lost(!wasReady_ && std::chrono::steady_clock::now() - opened_ > hang);
}

} // namespace Linux
