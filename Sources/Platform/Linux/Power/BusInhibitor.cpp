#include "Platform/Linux/Power/BusInhibitor.h"

#include <fcntl.h>
#include <memory>
#include <string>
#include <utility>

namespace Linux {

namespace {

int applicationAndReason(sd_bus_message* call, const char* application, const char* reason) {
    return sd_bus_message_append(call, "ss", application, reason);
}

// Idleness alone: a suspend or a logout that the user asks for is not in the way.
int sessionManagerArguments(sd_bus_message* call, const char* application, const char* reason) {
    constexpr unsigned noWindow = 0;
    constexpr unsigned idle = 8;
    return sd_bus_message_append(call, "susu", application, noWindow, reason, idle);
}

int loginArguments(sd_bus_message* call, const char* application, const char* reason) {
    return sd_bus_message_append(call, "ssss", "idle", application, reason, "block");
}

struct MessageUnref {
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};

} // namespace

const InhibitingService screenSaver = {.bus = BusKind::Session,
                                       .name = "org.freedesktop.ScreenSaver",
                                       .path = "/org/freedesktop/ScreenSaver",
                                       .interface = "org.freedesktop.ScreenSaver",
                                       .autoStart = true,
                                       .append = applicationAndReason,
                                       .release = "UnInhibit"};

const InhibitingService sessionManager = {.bus = BusKind::Session,
                                          .name = "org.gnome.SessionManager",
                                          .path = "/org/gnome/SessionManager",
                                          .interface = "org.gnome.SessionManager",
                                          .autoStart = false,
                                          .append = sessionManagerArguments,
                                          .release = "Uninhibit"};

const InhibitingService powerManagement = {.bus = BusKind::Session,
                                           .name = "org.freedesktop.PowerManagement",
                                           .path = "/org/freedesktop/PowerManagement/Inhibit",
                                           .interface = "org.freedesktop.PowerManagement.Inhibit",
                                           .autoStart = false,
                                           .append = applicationAndReason,
                                           .release = "UnInhibit"};

const InhibitingService login = {.bus = BusKind::System,
                                 .name = "org.freedesktop.login1",
                                 .path = "/org/freedesktop/login1",
                                 .interface = "org.freedesktop.login1.Manager",
                                 .autoStart = true,
                                 .append = loginArguments,
                                 .release = nullptr};

BusInhibitor::BusInhibitor(const InhibitingService& service)
    : IdleInhibitor(service.name), service_(service), bus_(service.bus, service.name) {
    bus_.lost = [this](bool hasHung) { lost(hasHung); };
}

bool BusInhibitor::connect() {
    if (!bus_.isOpen() && bus_.open()) {
        watchOwner();
    }
    return bus_.isOpen();
}

void BusInhibitor::watchOwner() {
    const std::string match = std::string("type='signal',sender='org.freedesktop.DBus',"
                                          "interface='org.freedesktop.DBus',member='NameOwnerChanged',arg0='") +
                              service_.name + "'";
    const auto handler = [](sd_bus_message* signal, void* self, sd_bus_error*) {
        const char* name = nullptr;
        const char* before = nullptr;
        const char* owner = nullptr;
        if (sd_bus_message_read(signal, "sss", &name, &before, &owner) > 0) {
            static_cast<BusInhibitor*>(self)->ownerChanged(*owner != '\0');
        }
        return 0;
    };
    sd_bus_add_match_async(bus_.get(), nullptr, match.c_str(), handler, nullptr, this);
    bus_.process();
}

void BusInhibitor::ask(const QString& application, const QString& reason) {
    application_ = application.toUtf8();
    reason_ = reason.toUtf8();
    ask();
}

// The answer to an earlier question that is still due will do.
void BusInhibitor::ask() {
    isAnswerDue_ = isAnswerDue_ || (connect() && send());
    setState(isAnswerDue_ ? State::Asked : State::Refused);
    bus_.process();
}

bool BusInhibitor::send() {
    sd_bus_message* created = nullptr;
    if (sd_bus_message_new_method_call(bus_.get(), &created, service_.name, service_.path, service_.interface,
                                       "Inhibit") < 0) {
        return false;
    }
    const std::unique_ptr<sd_bus_message, MessageUnref> call(created);
    const auto handler = [](sd_bus_message* answer, void* self, sd_bus_error*) {
        static_cast<BusInhibitor*>(self)->answered(answer);
        return 0;
    };
    return sd_bus_message_set_auto_start(call.get(), service_.autoStart ? 1 : 0) >= 0 &&
           service_.append(call.get(), application_.constData(), reason_.constData()) >= 0 &&
           sd_bus_call_async(bus_.get(), nullptr, call.get(), handler, this, 0) >= 0;
}

void BusInhibitor::answered(sd_bus_message* answer) {
    isAnswerDue_ = false;
    const bool hasGranted = take(answer);
    if (isWanted()) {
        setState(hasGranted ? State::Granted : State::Refused);
    } else if (hasGranted) { // too late
        release();
    }
}

bool BusInhibitor::take(sd_bus_message* answer) {
    if (sd_bus_message_is_method_error(answer, nullptr) != 0) {
        return false;
    }
    if (service_.release) {
        std::uint32_t cookie = 0;
        const bool isRead = sd_bus_message_read(answer, "u", &cookie) > 0;
        cookie_ = isRead ? std::optional(cookie) : std::nullopt;
        return isRead;
    }
    int descriptor = -1;
    if (sd_bus_message_read(answer, "h", &descriptor) > 0) { // the message's own, which goes with it
        descriptor_ = Descriptor(fcntl(descriptor, F_DUPFD_CLOEXEC, 0));
    }
    return static_cast<bool>(descriptor_);
}

void BusInhibitor::release() {
    descriptor_ = Descriptor();
    if (const auto cookie = std::exchange(cookie_, std::nullopt)) {
        giveBack(*cookie);
    }
    setState(State::Released);
}

void BusInhibitor::giveBack(std::uint32_t cookie) {
    sd_bus_call_method_async(bus_.get(), nullptr, service_.name, service_.path, service_.interface, service_.release,
                             nullptr, nullptr, "u", cookie);
    bus_.process();
}

std::optional<pollfd> BusInhibitor::awaited() const {
    return isAsked() ? std::optional(bus_.readiness()) : std::nullopt;
}

void BusInhibitor::ownerChanged(bool isThere) {
    cookie_.reset();
    if (!isWanted() || descriptor_) { // the login manager knows its descriptors again
        return;
    }
    if (isThere) {
        ask();
    } else if (!isAnswerDue_) {
        setState(State::Refused);
    }
}

// With the connection went what it held, but for a descriptor.
void BusInhibitor::lost(bool hasHung) {
    isAnswerDue_ = false;
    cookie_.reset();
    if (!isWanted() || descriptor_) {
        return;
    }
    if (hasHung) {
        ask();
    } else {
        setState(State::Refused);
    }
}

} // namespace Linux
