#include "Platform/Linux/Bar/SystemTray.h"

#include "Platform/Linux/Logging.h"

#include <QCoreApplication>
#include <cstring>
#include <string>

namespace Linux {

namespace {

xcb_screen_t* screenNumbered(xcb_connection_t* connection, int number) {
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; number > 0; --number) {
        xcb_screen_next(&screens);
    }
    return screens.data;
}

std::optional<std::uint8_t> depthOf(const xcb_screen_t& screen, xcb_visualid_t id) {
    for (auto depths = xcb_screen_allowed_depths_iterator(&screen); depths.rem > 0; xcb_depth_next(&depths)) {
        for (auto visuals = xcb_depth_visuals_iterator(depths.data); visuals.rem > 0; xcb_visualtype_next(&visuals)) {
            if (visuals.data->visual_id == id) {
                return depths.data->depth;
            }
        }
    }
    return std::nullopt;
}

} // namespace

SystemTray::SystemTray(xcb_connection_t* connection, int screenNumber)
    : connection_(connection), screen_(screenNumbered(connection, screenNumber)),
      selection_(atom(("_NET_SYSTEM_TRAY_S" + std::to_string(screenNumber)).c_str())), manager_(atom("MANAGER")),
      opcode_(atom("_NET_SYSTEM_TRAY_OPCODE")), visual_(atom("_NET_SYSTEM_TRAY_VISUAL")),
      colors_(atom("_NET_SYSTEM_TRAY_COLORS")) {
    QCoreApplication::instance()->installNativeEventFilter(this);
    watchScreen();
    find();
}

xcb_atom_t SystemTray::atom(const char* name) const {
    const auto cookie = xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(std::strlen(name)), name);
    const XcbReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection_, cookie, nullptr));
    return reply ? reply->atom : XCB_NONE;
}

// A tray that comes says so to those who watch the root window. The mask is shared with everyone on this connection.
void SystemTray::watchScreen() const {
    const auto cookie = xcb_get_window_attributes(connection_, screen_->root);
    const XcbReply<xcb_get_window_attributes_reply_t> now(
        xcb_get_window_attributes_reply(connection_, cookie, nullptr));
    const std::uint32_t mask = (now ? now->your_event_mask : 0U) | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection_, screen_->root, XCB_CW_EVENT_MASK, &mask);
}

void SystemTray::find() {
    const auto cookie = xcb_get_selection_owner(connection_, selection_);
    const XcbReply<xcb_get_selection_owner_reply_t> reply(xcb_get_selection_owner_reply(connection_, cookie, nullptr));
    owner_ = reply ? reply->owner : XCB_NONE;
    if (owner_ == XCB_NONE) {
        return;
    }
    const std::uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
    const auto watching = xcb_change_window_attributes_checked(connection_, owner_, XCB_CW_EVENT_MASK, &mask);
    const XcbReply<xcb_generic_error_t> error(xcb_request_check(connection_, watching));
    if (error) {
        owner_ = XCB_NONE; // it went in between; the next one will say that it has come
    }
}

bool SystemTray::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
    if (eventType == "xcb_generic_event_t") {
        handle(*static_cast<const xcb_generic_event_t*>(message));
    }
    return false;
}

void SystemTray::handle(const xcb_generic_event_t& event) {
    const int type = typeOf(event);
    if (type == XCB_CLIENT_MESSAGE && isArrival(eventAs<xcb_client_message_event_t>(event))) {
        find();
        qCDebug(barLog) << "an X11 tray came";
        Q_EMIT came();
    } else if (type == XCB_DESTROY_NOTIFY && isDeparture(eventAs<xcb_destroy_notify_event_t>(event))) {
        owner_ = XCB_NONE;
        qCDebug(barLog) << "the X11 tray went";
        Q_EMIT went();
    } else if (type == XCB_PROPERTY_NOTIFY && isRecolouring(eventAs<xcb_property_notify_event_t>(event))) {
        Q_EMIT recoloured();
    }
}

bool SystemTray::isArrival(const xcb_client_message_event_t& event) const {
    return event.window == screen_->root && event.type == manager_ && event.data.data32[1] == selection_;
}

bool SystemTray::isDeparture(const xcb_destroy_notify_event_t& event) const {
    return event.window == owner_;
}

bool SystemTray::isRecolouring(const xcb_property_notify_event_t& event) const {
    return event.window == owner_ && event.atom == colors_;
}

XcbReply<xcb_get_property_reply_t> SystemTray::property(xcb_atom_t name, xcb_atom_t type, std::uint32_t length) const {
    const auto cookie = xcb_get_property(connection_, 0, owner_, name, type, 0, length);
    XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection_, cookie, nullptr));
    const bool whole = reply && reply->format == 32 && reply->value_len == length;
    return whole ? std::move(reply) : nullptr;
}

TrayVisual SystemTray::visual() const {
    if (const auto reply = property(visual_, XCB_ATOM_VISUALID, 1)) {
        const auto id = *static_cast<const xcb_visualid_t*>(xcb_get_property_value(reply.get()));
        if (const auto depth = depthOf(*screen_, id)) {
            return {id, *depth};
        }
    }
    return {screen_->root_visual, screen_->root_depth};
}

std::optional<QColor> SystemTray::foreground() const {
    if (owner_ == XCB_NONE) {
        return std::nullopt;
    }
    // Red, green and blue, from 0 to 65535, of the foreground and of three more.
    const auto reply = property(colors_, XCB_ATOM_CARDINAL, 12);
    if (!reply) {
        return std::nullopt;
    }
    const auto* rgb = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
    const auto byte = [rgb](int component) { return static_cast<int>(rgb[component] >> 8 & 0xff); };
    return QColor(byte(0), byte(1), byte(2));
}

void SystemTray::dock(xcb_window_t window) const {
    constexpr std::uint32_t requestDock = 0;
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = owner_;
    message.type = opcode_;
    message.data.data32[0] = XCB_CURRENT_TIME;
    message.data.data32[1] = requestDock;
    message.data.data32[2] = window;
    const auto cookie = xcb_send_event_checked(connection_, 0, owner_, XCB_EVENT_MASK_NO_EVENT,
                                               reinterpret_cast<const char*>(&message));
    ignoreError(connection_, cookie);
    xcb_flush(connection_);
}

} // namespace Linux
