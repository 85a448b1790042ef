#include "Platform/Linux/Bar/TrayWindow.h"

#include <QGuiApplication>
#include <string>

namespace Linux {

namespace {

constexpr int usualSide = 22; // in points; trays that have their own idea make it that

constexpr std::uint32_t eventMask = XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE |
                                    XCB_EVENT_MASK_ENTER_WINDOW | XCB_EVENT_MASK_LEAVE_WINDOW |
                                    XCB_EVENT_MASK_POINTER_MOTION | XCB_EVENT_MASK_EXPOSURE |
                                    XCB_EVENT_MASK_STRUCTURE_NOTIFY;

QImage::Format formatOf(std::uint8_t depth) {
    switch (depth) {
    case 16:
        return QImage::Format_RGB16;
    case 30:
        return QImage::Format_RGB30;
    default:
        return QImage::Format_RGB32;
    }
}

} // namespace

TrayWindow::TrayWindow(const SystemTray& tray, const QString& title)
    : connection_(tray.connection()), screen_(tray.screen()), visual_(tray.visual()),
      colormap_(xcb_generate_id(connection_)), id_(xcb_generate_id(connection_)), pen_(xcb_generate_id(connection_)) {
    const int side = qRound(usualSide * qApp->devicePixelRatio());
    size_ = {side, side};
    create();
    describe(tray, title);
}

TrayWindow::~TrayWindow() {
    xcb_free_gc(connection_, pen_);
    ignoreError(connection_, xcb_destroy_window_checked(connection_, id_));
    xcb_free_colormap(connection_, colormap_);
    xcb_flush(connection_);
}

void TrayWindow::create() {
    xcb_create_colormap(connection_, XCB_COLORMAP_ALLOC_NONE, colormap_, screen_.root, visual_.id);
    // See-through where the visual can be, the panel's own background where not.
    const std::uint32_t backgroundKind = visual_.hasAlpha() ? XCB_CW_BACK_PIXEL : XCB_CW_BACK_PIXMAP;
    constexpr std::uint32_t panelsOwn = XCB_BACK_PIXMAP_PARENT_RELATIVE;
    const std::uint32_t backgroundValue = visual_.hasAlpha() ? 0 : panelsOwn;
    const std::uint32_t values[] = {backgroundValue, 0, eventMask, colormap_};
    const auto side = static_cast<std::uint16_t>(size_.width());
    xcb_create_window(connection_, visual_.depth, id_, screen_.root, 0, 0, side, side, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      visual_.id, backgroundKind | XCB_CW_BORDER_PIXEL | XCB_CW_EVENT_MASK | XCB_CW_COLORMAP, values);
    xcb_create_gc(connection_, pen_, id_, 0, nullptr);
}

void TrayWindow::describe(const SystemTray& tray, const QString& title) const {
    const std::string name = title.toStdString();
    setProperty(tray.atom("_NET_WM_NAME"), tray.atom("UTF8_STRING"), 8, name.data(), name.size());
    const std::string instanceAndClass = name + '\0' + name + '\0';
    setProperty(XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8, instanceAndClass.data(), instanceAndClass.size());

    constexpr std::uint32_t minimumSize = 1U << 4;
    std::uint32_t hints[18] = {minimumSize};
    hints[5] = hints[6] = static_cast<std::uint32_t>(size_.width());
    setProperty(XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS, 32, hints, std::size(hints));

    constexpr std::uint32_t version = 0;
    constexpr std::uint32_t mapped = 1;
    const std::uint32_t embedding[] = {version, mapped};
    const auto info = tray.atom("_XEMBED_INFO");
    setProperty(info, info, 32, embedding, std::size(embedding));
}

void TrayWindow::setProperty(xcb_atom_t name, xcb_atom_t type, std::uint8_t format, const void* items,
                             std::size_t count) const {
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, id_, name, type, format, static_cast<std::uint32_t>(count),
                        items);
}

QImage TrayWindow::surroundings() const {
    const QRect all(QPoint(), size_);
    if (!visual_.hasAlpha()) {
        ignoreError(connection_, xcb_clear_area_checked(connection_, 0, id_, 0, 0, 0, 0));
        return grab(id_, all);
    }
    const auto cookie = xcb_translate_coordinates(connection_, id_, screen_.root, 0, 0);
    const XcbReply<xcb_translate_coordinates_reply_t> place(
        xcb_translate_coordinates_reply(connection_, cookie, nullptr));
    return place ? grab(screen_.root, all.translated(place->dst_x, place->dst_y)) : QImage();
}

QImage TrayWindow::canvas() const {
    if (!visual_.hasAlpha()) {
        return surroundings();
    }
    QImage nothing(size_, QImage::Format_ARGB32_Premultiplied);
    nothing.fill(Qt::transparent);
    return nothing;
}

void TrayWindow::show(const QImage& picture) const {
    const auto cookie = xcb_put_image_checked(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, id_, pen_,
                                              static_cast<std::uint16_t>(picture.width()),
                                              static_cast<std::uint16_t>(picture.height()), 0, 0, 0, visual_.depth,
                                              static_cast<std::uint32_t>(picture.sizeInBytes()), picture.constBits());
    ignoreError(connection_, cookie);
    xcb_flush(connection_);
}

// Null where the rectangle is not wholly on the screen.
QImage TrayWindow::grab(xcb_window_t window, const QRect& rect) const {
    const auto cookie =
        xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, window, static_cast<std::int16_t>(rect.x()),
                      static_cast<std::int16_t>(rect.y()), static_cast<std::uint16_t>(rect.width()),
                      static_cast<std::uint16_t>(rect.height()), ~0U);
    const XcbReply<xcb_get_image_reply_t> reply(xcb_get_image_reply(connection_, cookie, nullptr));
    if (!reply) {
        return {};
    }
    const QImage borrowed(xcb_get_image_data(reply.get()), rect.width(), rect.height(), formatOf(reply->depth));
    return borrowed.copy();
}

} // namespace Linux
