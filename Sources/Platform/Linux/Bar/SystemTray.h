#pragma once

#include <QAbstractNativeEventFilter>
#include <QColor>
#include <QObject>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <xcb/xcb.h>

namespace Linux {

struct XcbFree {
    void operator()(void* reply) const { std::free(reply); }
};
template <class Reply>
using XcbReply = std::unique_ptr<Reply, XcbFree>;

/// For requests about windows that a tray may take with it when it goes, before we hear of it.
inline void ignoreError(xcb_connection_t* connection, xcb_void_cookie_t cookie) {
    xcb_discard_reply(connection, cookie.sequence);
}

template <class Event>
const Event& eventAs(const xcb_generic_event_t& event) {
    return reinterpret_cast<const Event&>(event);
}

inline int typeOf(const xcb_generic_event_t& event) {
    constexpr int sentByClient = 0x80;
    return event.response_type & ~sentByClient;
}

/// A kind of pixel that windows of a screen may have.
struct TrayVisual {
    xcb_visualid_t id;
    std::uint8_t depth;

    bool hasAlpha() const { return depth == 32; }
};

/// The X11 system tray of a screen (https://specifications.freedesktop.org/systemtray-spec/latest/): the window, of
/// whatever panel, that owns the tray's selection. Absent at times.
class SystemTray final : public QObject, public QAbstractNativeEventFilter {
    Q_OBJECT

public:
    SystemTray(xcb_connection_t* connection, int screenNumber);

    explicit operator bool() const { return owner_ != XCB_NONE; }
    xcb_connection_t* connection() const { return connection_; }
    const xcb_screen_t& screen() const { return *screen_; }

    /// What an icon's window is to be made with.
    TrayVisual visual() const;
    /// The colour that symbols have on this panel, if it says so.
    std::optional<QColor> foreground() const;

    /// Asks the tray to take in a window.
    void dock(xcb_window_t window) const;

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

    xcb_atom_t atom(const char* name) const;

Q_SIGNALS:
    /// There is a tray, or another one than before.
    void came();
    void went();
    void recoloured();

private:
    void watchScreen() const;
    void find();
    void handle(const xcb_generic_event_t& event);
    bool isArrival(const xcb_client_message_event_t& event) const;
    bool isDeparture(const xcb_destroy_notify_event_t& event) const;
    bool isRecolouring(const xcb_property_notify_event_t& event) const;
    XcbReply<xcb_get_property_reply_t> property(xcb_atom_t name, xcb_atom_t type, std::uint32_t length) const;

    xcb_connection_t* connection_;
    xcb_screen_t* screen_;
    xcb_atom_t selection_;
    xcb_atom_t manager_;
    xcb_atom_t opcode_;
    xcb_atom_t visual_;
    xcb_atom_t colors_;
    xcb_window_t owner_ = XCB_NONE;
};

} // namespace Linux
