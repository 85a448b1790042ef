#pragma once

#include "Platform/Linux/AppKit/ViewNative.h"

#include <QAbstractButton>

namespace Linux {

/// A view whose widget can be pressed, and which is on or off.
struct CheckableNative : ViewNative {
    explicit CheckableNative(QAbstractButton* button) : ViewNative(button), button(button) {
        QObject::connect(button, &QAbstractButton::clicked, button, [this] { sendAction(); });
    }

    void setState(ControlStateValue state) const { button->setChecked(state == ControlStateValue::On); }
    ControlStateValue state() const { return button->isChecked() ? ControlStateValue::On : ControlStateValue::Off; }

    QPointer<QAbstractButton> button;
};

} // namespace Linux
