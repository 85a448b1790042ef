#include "Platform/AppKit/Button.h"

#include "Platform/Linux/AppKit/CheckableNative.h"

#include <QPushButton>
#include <QRadioButton>
#include <QShortcut>

namespace Linux {

namespace {

struct ButtonNative : CheckableNative {
    using CheckableNative::CheckableNative;

    BezelStyle bezelStyle = BezelStyle::Rounded;
    QString keyEquivalent;
};

Button wrap(QAbstractButton* widget, std::function<void()> action) {
    auto native = std::make_shared<ButtonNative>(widget);
    native->action = std::move(action);
    return handle<Button>(std::move(native));
}

} // namespace

template <>
struct NativeOf<Button> : std::type_identity<ButtonNative> {};

} // namespace Linux

namespace NS {

using namespace Linux;

Button Button::buttonWithTitle(const std::string& title, std::function<void()> action) {
    return wrap(new QPushButton(QString::fromStdString(title)), std::move(action));
}

Button Button::radioButtonWithTitle(const std::string& title, std::function<void()> action) {
    // Radio buttons exclude each other among the children of one widget, as they do in one superview.
    return wrap(new QRadioButton(QString::fromStdString(title)), std::move(action));
}

std::string Button::title() const {
    return native(*this).button->text().toStdString();
}

void Button::setState(ControlStateValue state) {
    native(*this).setState(state);
}

ControlStateValue Button::state() const {
    return native(*this).state();
}

void Button::setBezelStyle(BezelStyle style) {
    native(*this).bezelStyle = style; // a desktop has one look for push buttons: its own
}

BezelStyle Button::bezelStyle() const {
    return native(*this).bezelStyle;
}

void Button::setKeyEquivalent(const std::string& key) {
    auto& self = native(*this);
    self.keyEquivalent = QString::fromStdString(key);
    if (key != "\r") {
        return;
    }
    for (const Qt::Key pressed : {Qt::Key_Return, Qt::Key_Enter}) {
        auto* shortcut = new QShortcut(QKeySequence(pressed), self.button);
        QObject::connect(shortcut, &QShortcut::activated, self.button, [&self] { self.button->animateClick(); });
    }
    if (auto* push = qobject_cast<QPushButton*>(self.button)) {
        push->setDefault(true);
    }
}

std::string Button::keyEquivalent() const {
    return native(*this).keyEquivalent.toStdString();
}

void Button::performClick() {
    native(*this).button->click();
}

} // namespace NS
