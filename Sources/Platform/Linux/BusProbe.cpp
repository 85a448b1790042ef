#include "Platform/Linux/BusProbe.h"

#include "Platform/Linux/BusConnection.h"

#include <memory>
#include <utility>

namespace Linux {

namespace {

/// A connection that lasts until the bus has answered.
class BusProbe final : public QObject {
public:
    BusProbe(QObject* owner, std::function<void()> done) : QObject(owner), done_(std::move(done)) {
        bus_.lost = [this](bool hasHung) {
            if (!hasHung || !ask()) {
                deleteLater();
            }
        };
    }

    bool ask() {
        if (!bus_.open() ||
            sd_bus_call_method_async(bus_.get(), nullptr, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                     "org.freedesktop.DBus", "GetId", answered, this, nullptr) < 0) {
            return false;
        }
        bus_.process();
        return true;
    }

    void waitForAnswer(std::chrono::milliseconds patience) {
        const auto end = std::chrono::steady_clock::now() + patience;
        while (!hasAnswered_ && bus_.isOpen()) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
            if (left.count() <= 0) {
                return;
            }
            auto readiness = bus_.readiness();
            poll(&readiness, 1, static_cast<int>(left.count()));
            bus_.process();
        }
    }

private:
    static int answered(sd_bus_message* answer, void* probe, sd_bus_error*) {
        auto& self = *static_cast<BusProbe*>(probe);
        if (sd_bus_message_is_method_error(answer, nullptr) == 0) { // or else the connection is being lost
            self.hasAnswered_ = true;
            QMetaObject::invokeMethod(self.parent(), self.done_, Qt::QueuedConnection);
            self.deleteLater();
        }
        return 0;
    }

    BusConnection bus_{BusKind::Session, "probe"};
    const std::function<void()> done_;
    bool hasAnswered_ = false;
};

} // namespace

bool whenSessionBusAnswers(QObject* owner, std::function<void()> done, std::chrono::milliseconds patience) {
    auto probe = std::make_unique<BusProbe>(owner, std::move(done));
    if (!probe->ask()) {
        return false;
    }
    probe.release()->waitForAnswer(patience);
    return true;
}

} // namespace Linux
