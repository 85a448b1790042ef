#include "Platform/AppKit/View.h"

#include "Platform/AppKit/Control.h"
#include "Platform/Linux/AppKit/LayoutNative.h"
#include "Platform/Linux/AppKit/ViewNative.h"

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

void View::setTranslatesAutoresizingMaskIntoConstraints(bool translates) {
    Bridge::native<ViewNative>(*this).translatesAutoresizingMask = translates;
}

bool View::translatesAutoresizingMaskIntoConstraints() const {
    return Bridge::native<ViewNative>(*this).translatesAutoresizingMask;
}

LayoutDimension View::widthAnchor() const {
    return makeDimension(Bridge::shared<ViewNative>(*this), Qt::Horizontal);
}

LayoutDimension View::heightAnchor() const {
    return makeDimension(Bridge::shared<ViewNative>(*this), Qt::Vertical);
}

Size View::fittingSize() const {
    const auto& widget = Bridge::native<ViewNative>(*this).widget;
    if (auto* layout = widget->layout()) {
        layout->activate();
    }
    const QSize size = widget->sizeHint();
    return {static_cast<double>(size.width()), static_cast<double>(size.height())};
}

void Control::setAction(std::function<void()> action) {
    Bridge::native<ViewNative>(*this).action = std::move(action);
}

} // namespace NS
