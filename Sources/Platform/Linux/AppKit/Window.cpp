#include "Platform/AppKit/Window.h"

#include "Platform/Linux/AppKit/WindowNative.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QIcon>
#include <QRadioButton>
#include <QScreen>
#include <QVBoxLayout>
#include <QWidget>
#include <cmath>

namespace Linux {

namespace {

Qt::WindowFlags flags(WindowStyleMask style) {
    Qt::WindowFlags flags = Qt::Dialog | Qt::CustomizeWindowHint; // a dialog: nothing to minimise or resize
    if (contains(style, WindowStyleMask::Titled)) {
        flags |= Qt::WindowTitleHint;
    }
    if (contains(style, WindowStyleMask::Closable)) {
        flags |= Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint;
    }
    return flags;
}

/// Closing hides it, where the style lets the user close it at all. No style here is resizable.
class WindowWidget : public QWidget {
public:
    explicit WindowWidget(WindowStyleMask style)
        : QWidget(nullptr, flags(style)), closable_(contains(style, WindowStyleMask::Closable)) {
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        setWindowIcon(QIcon::fromTheme(QGuiApplication::desktopFileName())); // on Wayland that name is enough
    }

protected:
    void closeEvent(QCloseEvent* event) override { event->setAccepted(closable_); }

private:
    const bool closable_;
};

// Qt takes only its own dialogs for windows that a screen reader announces.
QAccessibleInterface* makeAccessible(const QString&, QObject* object) {
    auto* window = dynamic_cast<WindowWidget*>(object);
    return window ? new QAccessibleWidget(window, QAccessible::Dialog) : nullptr;
}

// The keyboard starts at the choice that is made, if there is one, and else before the first control: none of them is
// worked unseen.
void setInitialFocus(QWidget& window) {
    for (auto* radio : window.findChildren<QRadioButton*>()) {
        if (radio->isChecked()) {
            radio->setFocus();
            return;
        }
    }
    window.setFocus();
}

} // namespace

WindowNative::WindowNative(const Rect& contentRect, WindowStyleMask styleMask)
    : style(styleMask), widget(new WindowWidget(styleMask)) {
    setContentSize(contentRect.size);
}

WindowNative::~WindowNative() {
    widget->hide();
    if (content && content.use_count() > 1 && content->widget) { // it outlives us
        content->widget->setParent(nullptr);
    }
    widget->deleteLater();
}

std::vector<std::weak_ptr<WindowNative>>& WindowNative::all() {
    static std::vector<std::weak_ptr<WindowNative>> windows;
    std::erase_if(windows, [](const auto& window) { return window.expired(); });
    return windows;
}

void WindowNative::setContentSize(const Size& size) const {
    widget->setFixedSize(static_cast<int>(std::ceil(size.width)), static_cast<int>(std::ceil(size.height)));
}

} // namespace Linux

namespace NS {

using namespace Linux;

Window Window::initWithContentRect(const Rect& contentRect, WindowStyleMask style, BackingStoreType, bool) {
    QAccessible::installFactory(makeAccessible); // once, however often
    auto native = std::make_shared<WindowNative>(contentRect, style);
    WindowNative::all().push_back(native);
    return handle<Window>(std::move(native));
}

WindowStyleMask Window::styleMask() const {
    return native(*this).style;
}

void Window::setReleasedWhenClosed(bool released) {
    native(*this).releasedWhenClosed = released;
}

bool Window::isReleasedWhenClosed() const {
    return native(*this).releasedWhenClosed;
}

void Window::setTitle(const std::string& title) {
    native(*this).title = title;
    native(*this).widget->setWindowTitle(QString::fromStdString(title));
}

std::string Window::title() const {
    return native(*this).title;
}

// The frame belongs to the window manager: it has no transparent title bars, and shows an untitled window under the
// application's name.
void Window::setTitleVisibility(WindowTitleVisibility visibility) {
    native(*this).titleVisibility = visibility;
}

WindowTitleVisibility Window::titleVisibility() const {
    return native(*this).titleVisibility;
}

void Window::setTitlebarAppearsTransparent(bool transparent) {
    native(*this).titlebarTransparent = transparent;
}

bool Window::titlebarAppearsTransparent() const {
    return native(*this).titlebarTransparent;
}

void Window::setContentView(const View& view) {
    auto& self = native(*this);
    self.content = shared(view);
    self.widget->layout()->addWidget(self.content->widget);
}

View Window::contentView() const {
    return handle<View>(native(*this).content);
}

void Window::setContentSize(const Size& size) {
    native(*this).setContentSize(size);
}

Rect Window::frame() const {
    const auto* widget = native(*this).widget;
    const QRect frame = widget->frameGeometry();
    const QRect screen = widget->screen()->geometry();
    return {{static_cast<double>(frame.left() - screen.left()),
             static_cast<double>(screen.bottom() - frame.bottom())}, // y grows upwards
            {static_cast<double>(frame.width()), static_cast<double>(frame.height())}};
}

void Window::center() {
    auto* widget = native(*this).widget;
    QRect geometry(QPoint(), widget->size());
    geometry.moveCenter(widget->screen()->availableGeometry().center());
    widget->setGeometry(geometry);
}

void Window::makeKeyAndOrderFront() {
    auto* widget = native(*this).widget;
    if (widget->focusWidget() == nullptr) {
        setInitialFocus(*widget);
    }
    widget->show();
    widget->raise();
    widget->activateWindow();
}

void Window::orderFrontRegardless() {
    auto* widget = native(*this).widget;
    widget->show();
    widget->raise();
}

void Window::orderOut() {
    native(*this).widget->hide();
}

bool Window::isVisible() const {
    return native(*this).widget->isVisible();
}

} // namespace NS
