#include "Platform/AppKit/View.h"

#include "Platform/AppKit/Control.h"
#include "Platform/Linux/AppKit/LayoutNative.h"
#include "Platform/Linux/AppKit/ViewNative.h"

#include <QLabel>
#include <QLayout>

namespace NS {

ViewNative::~ViewNative() {
    for (const auto& subview : subviews) {
        if (subview.use_count() > 1 && subview->widget) { // it outlives us
            subview->widget->setParent(nullptr);
        }
    }
    if (widget) {
        widget->deleteLater();
    }
}

void ViewNative::adopt(const std::shared_ptr<ViewNative>& subview) {
    subview->widget->setParent(widget);
    subviews.push_back(subview);
}

void ViewNative::sendAction() const {
    if (const auto copy = action) {
        copy();
    }
}

namespace {

// A layout learns of a change below it only when events are handled, unless those below are asked first.
void activateLayouts(QWidget& widget) {
    for (auto* child : widget.findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
        activateLayouts(*child);
    }
    if (auto* layout = widget.layout()) {
        layout->activate();
    }
}

} // namespace

View View::initWithFrame(const Rect& frame) {
    auto native = std::make_shared<ViewNative>(new QWidget);
    native->widget->resize(QSizeF(frame.size.width, frame.size.height).toSize());
    return Bridge::handle<View>(std::move(native));
}

void View::addSubview(const View& view) {
    Bridge::native<ViewNative>(*this).adopt(Bridge::shared<ViewNative>(view));
}

void View::setTranslatesAutoresizingMaskIntoConstraints(bool translates) {
    Bridge::native<ViewNative>(*this).translatesAutoresizingMask = translates;
}

bool View::translatesAutoresizingMaskIntoConstraints() const {
    return Bridge::native<ViewNative>(*this).translatesAutoresizingMask;
}

LayoutXAxisAnchor View::leadingAnchor() const {
    return makeAnchor<LayoutXAxisAnchor>(Bridge::shared<ViewNative>(*this), Edge::Leading);
}

LayoutXAxisAnchor View::trailingAnchor() const {
    return makeAnchor<LayoutXAxisAnchor>(Bridge::shared<ViewNative>(*this), Edge::Trailing);
}

LayoutXAxisAnchor View::centerXAnchor() const {
    return makeAnchor<LayoutXAxisAnchor>(Bridge::shared<ViewNative>(*this), Edge::CenterX);
}

LayoutYAxisAnchor View::topAnchor() const {
    return makeAnchor<LayoutYAxisAnchor>(Bridge::shared<ViewNative>(*this), Edge::Top);
}

LayoutYAxisAnchor View::bottomAnchor() const {
    return makeAnchor<LayoutYAxisAnchor>(Bridge::shared<ViewNative>(*this), Edge::Bottom);
}

LayoutDimension View::widthAnchor() const {
    return makeDimension(Bridge::shared<ViewNative>(*this), Qt::Horizontal);
}

LayoutDimension View::heightAnchor() const {
    return makeDimension(Bridge::shared<ViewNative>(*this), Qt::Vertical);
}

Size View::fittingSize() const {
    const auto& widget = Bridge::native<ViewNative>(*this).widget;
    activateLayouts(*widget);
    const QSize size = widget->sizeHint().shrunkBy(Bridge::native<ViewNative>(*this).alignmentInsets());
    return {static_cast<double>(size.width()), static_cast<double>(size.height())};
}

void View::setAccessibilityTitleUIElement(const View& title) {
    if (auto* label = qobject_cast<QLabel*>(Bridge::native<ViewNative>(title).widget)) {
        label->setBuddy(Bridge::native<ViewNative>(*this).widget);
    }
}

void Control::setAction(std::function<void()> action) {
    Bridge::native<ViewNative>(*this).action = std::move(action);
}

void Control::setEnabled(bool enabled) {
    Bridge::native<ViewNative>(*this).widget->setEnabled(enabled);
}

bool Control::isEnabled() const {
    return Bridge::native<ViewNative>(*this).widget->isEnabled();
}

} // namespace NS
