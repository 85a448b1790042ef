#include "Platform/Linux/Bar/SystemTrayIcon.h"

#include "Platform/Linux/Bar/Click.h"
#include "Platform/Linux/Bar/PanelIcon.h"

#include <QApplication>
#include <QPainter>
#include <QScreen>
#include <QStyle>
#include <QToolTip>
#include <algorithm>
#include <chrono>
#include <utility>

namespace Linux {

namespace {

using namespace std::chrono_literals;

// Of an event that may concern the icon's window.
xcb_window_t windowOf(int type, const xcb_generic_event_t& event) {
    switch (type) {
    case XCB_EXPOSE:
        return eventAs<xcb_expose_event_t>(event).window;
    case XCB_CONFIGURE_NOTIFY:
        return eventAs<xcb_configure_notify_event_t>(event).window;
    case XCB_DESTROY_NOTIFY:
        return eventAs<xcb_destroy_notify_event_t>(event).window;
    case XCB_BUTTON_PRESS:
    case XCB_BUTTON_RELEASE:
    case XCB_MOTION_NOTIFY:
    case XCB_ENTER_NOTIFY:
    case XCB_LEAVE_NOTIFY:
        return eventAs<xcb_motion_notify_event_t>(event).event; // these begin alike
    default:
        return XCB_NONE;
    }
}

// The picture leaves the corners free, so that the panel shows there.
bool isDark(const QImage& surroundings) {
    const int right = surroundings.width() - 1;
    const int bottom = surroundings.height() - 1;
    int gray = 0;
    for (const QPoint corner : {QPoint(0, 0), QPoint(right, 0), QPoint(0, bottom), QPoint(right, bottom)}) {
        gray += qGray(surroundings.pixel(corner));
    }
    return gray / 4 < 128;
}

// Qt scales each screen about its top left corner, which is the same in both units.
QPoint toLogical(const QPoint& native) {
    for (const QScreen* screen : QGuiApplication::screens()) {
        const QPoint origin = screen->geometry().topLeft();
        const double ratio = screen->devicePixelRatio();
        if (QRect(origin, screen->size() * ratio).contains(native)) {
            return origin + (native - origin) / ratio;
        }
    }
    return native;
}

// Where a menu opens beside the icon, not over it: below in a bar at the top, above in one at the bottom.
QPoint menuCorner(const QRect& icon) {
    const QPoint top = toLogical(icon.topLeft());
    const QScreen* screen = QGuiApplication::screenAt(top);
    const bool isLow = screen != nullptr && top.y() > screen->geometry().center().y();
    return isLow ? top : toLogical(icon.bottomLeft() + QPoint(0, 1));
}

} // namespace

SystemTrayIcon::SystemTrayIcon(StatusItemNative& item, const QString& title, const SystemTray& tray)
    : item_(item), title_(title), tray_(tray) {
    connect(&tray_, &SystemTray::came, this, &SystemTrayIcon::dock);
    connect(&tray_, &SystemTray::went, this, &SystemTrayIcon::undock);
    connect(&tray_, &SystemTray::recoloured, this, &SystemTrayIcon::draw);
    toolTipDelay_.setSingleShot(true);
    connect(&toolTipDelay_, &QTimer::timeout, this, &SystemTrayIcon::showToolTip);
    // Panels and compositors draw what is around the icon a little later than the icon.
    settling_.setSingleShot(true);
    settling_.setInterval(300ms);
    connect(&settling_, &QTimer::timeout, this, &SystemTrayIcon::draw);
    qApp->installNativeEventFilter(this);
    dock();
}

void SystemTrayIcon::dock() {
    undock();
    if (tray_) {
        window_.emplace(tray_, title_);
        tray_.dock(window_->id());
    }
}

void SystemTrayIcon::undock() {
    left();
    settling_.stop();
    pressedButton_ = 0;
    window_.reset();
}

void SystemTrayIcon::draw() {
    QImage picture = window_ && item_.image ? window_->canvas() : QImage();
    if (picture.isNull()) {
        return;
    }
    const int side = std::min(picture.width(), picture.height());
    const QImage icon = squareIcon(*item_.image, side, tint());
    QPainter(&picture).drawImage((picture.width() - side) / 2, (picture.height() - side) / 2, icon);
    window_->show(picture);
}

QColor SystemTrayIcon::tint() const {
    if (!item_.image->isTemplate) {
        return {};
    }
    if (const auto foreground = tray_.foreground()) {
        return *foreground;
    }
    const QImage surroundings = window_->surroundings();
    return glyphColor(!surroundings.isNull() && isDark(surroundings));
}

// Nothing is kept from Qt: it has no use for this window's events but the time of a click, which menus need.
bool SystemTrayIcon::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
    if (window_ && eventType == "xcb_generic_event_t") {
        const auto& event = *static_cast<const xcb_generic_event_t*>(message);
        if (const int type = typeOf(event); windowOf(type, event) == window_->id()) {
            handle(type, event);
        }
    }
    return false;
}

void SystemTrayIcon::handle(int type, const xcb_generic_event_t& event) {
    switch (type) {
    case XCB_EXPOSE:
        return exposed(eventAs<xcb_expose_event_t>(event));
    case XCB_CONFIGURE_NOTIFY:
        return configured(eventAs<xcb_configure_notify_event_t>(event));
    case XCB_DESTROY_NOTIFY:
        return undock();
    case XCB_BUTTON_PRESS:
        return pressed(eventAs<xcb_button_press_event_t>(event));
    case XCB_BUTTON_RELEASE:
        return released(eventAs<xcb_button_release_event_t>(event));
    case XCB_ENTER_NOTIFY:
    case XCB_MOTION_NOTIFY:
        return hovered(eventAs<xcb_motion_notify_event_t>(event));
    case XCB_LEAVE_NOTIFY:
        return left();
    default:
        return;
    }
}

void SystemTrayIcon::exposed(const xcb_expose_event_t& event) {
    if (event.count == 0) {
        draw();
        settling_.start();
    }
}

// Another size brings an exposure too, another place need not.
void SystemTrayIcon::configured(const xcb_configure_notify_event_t& event) {
    window_->setSize({event.width, event.height});
    draw();
}

void SystemTrayIcon::pressed(const xcb_button_press_event_t& event) {
    left();
    pressedButton_ = event.detail;
}

void SystemTrayIcon::released(const xcb_button_release_event_t& event) {
    const bool wasPressed = std::exchange(pressedButton_, xcb_button_t{0}) == event.detail;
    const bool isLeft = event.detail == XCB_BUTTON_INDEX_1;
    const bool isRight = event.detail == XCB_BUTTON_INDEX_3;
    const QRect icon({}, window_->size());
    if (wasPressed && (isLeft || isRight) && icon.contains(event.event_x, event.event_y)) {
        const bool control = (event.state & XCB_MOD_MASK_CONTROL) != 0;
        const QRect onScreen = icon.translated(event.root_x - event.event_x, event.root_y - event.event_y);
        deliverLater({isLeft ? EventType::LeftMouseUp : EventType::RightMouseUp, control, menuCorner(onScreen)}, item_,
                     this);
    }
}

void SystemTrayIcon::hovered(const xcb_motion_notify_event_t& event) {
    pointer_ = toLogical({event.root_x, event.root_y});
    if (!QToolTip::isVisible() && !QApplication::activePopupWidget()) { // not over a menu
        toolTipDelay_.start(QApplication::style()->styleHint(QStyle::SH_ToolTip_WakeUpDelay));
    }
}

void SystemTrayIcon::left() {
    toolTipDelay_.stop();
    if (std::exchange(pointer_, std::nullopt)) {
        QToolTip::hideText();
    }
}

void SystemTrayIcon::showToolTip() {
    if (pointer_ && !QApplication::activePopupWidget()) {
        QToolTip::showText(*pointer_, item_.toolTip);
    }
}

void SystemTrayIcon::toolTipChanged() {
    if (QToolTip::isVisible()) {
        showToolTip();
    }
}

} // namespace Linux
