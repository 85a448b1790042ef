#pragma once

#include "Platform/AppKit/View.h"
#include "Platform/Linux/Native.h"

#include <QPointer>
#include <QWidget>
#include <functional>
#include <memory>
#include <vector>

namespace NS {

/// A view and its widget. The widget's parent is the superview's widget, and the superview's native keeps this one.
struct ViewNative : Native {
    explicit ViewNative(QWidget* widget) : widget(widget) {}
    /// Later rather than now: the last handle may go in the middle of an action of the widget itself.
    ~ViewNative() override;

    /// Puts the other view's widget into this one's. Where exactly is the caller's business.
    void adopt(const std::shared_ptr<ViewNative>& subview);

    QPointer<QWidget> widget;
    bool translatesAutoresizingMask = true;
    std::function<void()> action;
    std::vector<std::shared_ptr<ViewNative>> subviews;

    /// Runs the action, if there is one. A copy of it, since it may let go of this view.
    void sendAction() const;
};

} // namespace NS
