#include "Platform/AppKit/View.h"

#include "Platform/Linux/AppKit/Anchors.h"
#include "Platform/Linux/AppKit/ViewNative.h"

#include <QLabel>
#include <QLayout>

namespace Linux {

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

} // namespace Linux

namespace NS {

using namespace Linux;

View View::initWithFrame(const Rect& frame) {
    auto native = std::make_shared<ViewNative>(new QWidget);
    native->widget->resize(QSizeF(frame.size.width, frame.size.height).toSize());
    return handle<View>(std::move(native));
}

void View::addSubview(const View& view) {
    native(*this).adopt(shared(view));
}

void View::setTranslatesAutoresizingMaskIntoConstraints(bool translates) {
    native(*this).translatesAutoresizingMask = translates;
}

bool View::translatesAutoresizingMaskIntoConstraints() const {
    return native(*this).translatesAutoresizingMask;
}

LayoutXAxisAnchor View::leadingAnchor() const {
    return makeAnchor<LayoutXAxisAnchor>(shared(*this), Edge::Leading);
}

LayoutXAxisAnchor View::trailingAnchor() const {
    return makeAnchor<LayoutXAxisAnchor>(shared(*this), Edge::Trailing);
}

LayoutXAxisAnchor View::centerXAnchor() const {
    return makeAnchor<LayoutXAxisAnchor>(shared(*this), Edge::CenterX);
}

LayoutYAxisAnchor View::topAnchor() const {
    return makeAnchor<LayoutYAxisAnchor>(shared(*this), Edge::Top);
}

LayoutYAxisAnchor View::bottomAnchor() const {
    return makeAnchor<LayoutYAxisAnchor>(shared(*this), Edge::Bottom);
}

LayoutDimension View::widthAnchor() const {
    return makeDimension(shared(*this), Qt::Horizontal);
}

LayoutDimension View::heightAnchor() const {
    return makeDimension(shared(*this), Qt::Vertical);
}

Size View::fittingSize() const {
    const auto& widget = native(*this).widget;
    activateLayouts(*widget);
    const QSize size = widget->sizeHint().shrunkBy(native(*this).alignmentInsets());
    return {static_cast<double>(size.width()), static_cast<double>(size.height())};
}

void View::setAccessibilityTitleUIElement(const View& title) {
    if (auto* label = qobject_cast<QLabel*>(native(title).widget)) {
        label->setBuddy(native(*this).widget);
    }
}

} // namespace NS
