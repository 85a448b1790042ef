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

private:
    static int answered(sd_bus_message* answer, void* probe, sd_bus_error*) {
        auto& self = *static_cast<BusProbe*>(probe);
        if (sd_bus_message_is_method_error(answer, nullptr) == 0) { // or else the connection is being lost
            QMetaObject::invokeMethod(self.parent(), self.done_, Qt::QueuedConnection);
            self.deleteLater();
        }
        return 0;
    }

    BusConnection bus_{BusKind::Session, "probe"};
    const std::function<void()> done_;
};

} // namespace

bool whenSessionBusAnswers(QObject* owner, std::function<void()> done) {
    auto probe = std::make_unique<BusProbe>(owner, std::move(done));
    return probe->ask() && probe.release();
}

} // namespace Linux
