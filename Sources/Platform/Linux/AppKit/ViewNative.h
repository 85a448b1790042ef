#pragma once

#include "Platform/AppKit/Control.h"
#include "Platform/Linux/Native.h"

#include <QMargins>
#include <QPointer>
#include <QWidget>
#include <functional>
#include <memory>
#include <vector>

namespace Linux {

/// A view and its widget. The widget's parent is the superview's widget, and the superview's native keeps this one.
struct ViewNative : Native {
    explicit ViewNative(QWidget* widget) : widget(widget) {}
    /// Later rather than now: the last handle may go in the middle of an action of the widget itself.
    ~ViewNative() override;

    /// Puts the other view's widget into this one's. The caller lays it out.
    void adopt(const std::shared_ptr<ViewNative>& subview);

    /// How far below the top of the widget, at its own size, its first line of text stands. A view without text
    /// stands on its lower edge.
    virtual int firstBaseline() const { return widget->sizeHint().height(); }
    /// The invisible part of the widget around the visible one, such as room for a focus ring. It does not count when
    /// views are aligned.
    virtual QMargins alignmentInsets() const { return {}; }

    QPointer<QWidget> widget;
    bool translatesAutoresizingMask = true;
    std::function<void()> action;
    std::vector<std::shared_ptr<ViewNative>> subviews;

    /// Runs the action, if there is one. A copy of it, since it may let go of this view.
    void sendAction() const;
};

template <>
struct NativeOf<View> : std::type_identity<ViewNative> {};

template <>
struct NativeOf<Control> : NativeOf<View> {};

} // namespace Linux
