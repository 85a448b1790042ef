#include "Platform/Linux/AppKit/EdgeLayout.h"

#include <QWidget>

namespace Linux {

namespace {

/// The visible part of a widget at its own size.
QSize sizeWithin(const QWidget& widget, const QMargins& insets) {
    return widget.sizeHint().shrunkBy(insets);
}

} // namespace

EdgeLayout& EdgeLayout::of(QWidget& superview) {
    auto* layout = dynamic_cast<EdgeLayout*>(superview.layout());
    return layout ? *layout : *new EdgeLayout(superview);
}

EdgeLayout::Place& EdgeLayout::placeOf(const ViewNative& subview) {
    for (auto& place : places_) {
        if (place.widget == subview.widget) {
            return place;
        }
    }
    return places_.emplace_back(Place{subview.widget, subview.alignmentInsets(), {}, false});
}

void EdgeLayout::constrain(const ViewNative& subview, Edge edge, int distance) {
    auto& place = placeOf(subview);
    switch (edge) {
    case Edge::Leading:
        place.margins.setLeft(distance);
        break;
    case Edge::Trailing:
        place.margins.setRight(-distance);
        break;
    case Edge::CenterX:
        place.isCentered = true;
        break;
    case Edge::Top:
        place.margins.setTop(distance);
        break;
    case Edge::Bottom:
        place.margins.setBottom(-distance);
        break;
    }
    invalidate();
}

QSize EdgeLayout::sizeHint() const {
    QSize size(0, 0);
    for (const auto& place : places_) {
        if (place.widget) {
            size = size.expandedTo(sizeWithin(*place.widget, place.insets).grownBy(place.margins));
        }
    }
    return size;
}

void EdgeLayout::setGeometry(const QRect& rect) {
    QLayout::setGeometry(rect);
    for (const auto& place : places_) {
        if (!place.widget) {
            continue;
        }
        QRect inner = rect.marginsRemoved(place.margins);
        if (place.isCentered) {
            const int width = sizeWithin(*place.widget, place.insets).width();
            inner = QRect(rect.x() + (rect.width() - width) / 2, inner.y(), width, inner.height());
        }
        place.widget->setGeometry(inner.marginsAdded(place.insets));
    }
}

} // namespace Linux
