#include "Platform/Linux/AppKit/EdgeLayout.h"

#include <QWidget>
#include <algorithm>

namespace Linux {

EdgeLayout& EdgeLayout::of(QWidget& superview) {
    auto* layout = dynamic_cast<EdgeLayout*>(superview.layout());
    return layout ? *layout : *new EdgeLayout(superview);
}

EdgeLayout::Place& EdgeLayout::placeOf(const ViewNative& subview) {
    const auto found = std::find_if(places_.begin(), places_.end(),
                                    [&](const Place& place) { return place.item->widget() == subview.widget; });
    if (found != places_.end()) {
        return *found;
    }
    addWidget(subview.widget);
    places_.back().insets = subview.alignmentInsets();
    return places_.back();
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
        place.isCentred = true;
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

void EdgeLayout::addItem(QLayoutItem* item) {
    places_.push_back({std::unique_ptr<QLayoutItem>(item), {}, {}, false});
}

QLayoutItem* EdgeLayout::itemAt(int index) const {
    return index >= 0 && index < count() ? places_[static_cast<std::size_t>(index)].item.get() : nullptr;
}

QLayoutItem* EdgeLayout::takeAt(int index) {
    if (index < 0 || index >= count()) {
        return nullptr;
    }
    auto* item = places_[static_cast<std::size_t>(index)].item.release();
    places_.erase(places_.begin() + index);
    return item;
}

QSize EdgeLayout::sizeHint() const {
    QSize size(0, 0);
    for (const auto& place : places_) {
        size = size.expandedTo(place.item->sizeHint().shrunkBy(place.insets).grownBy(place.margins));
    }
    return size;
}

void EdgeLayout::setGeometry(const QRect& rect) {
    QLayout::setGeometry(rect);
    for (const auto& place : places_) {
        QRect inner = rect.marginsRemoved(place.margins);
        if (place.isCentred) {
            const int width = place.item->sizeHint().shrunkBy(place.insets).width();
            inner = QRect(rect.x() + (rect.width() - width) / 2, inner.y(), width, inner.height());
        }
        place.item->setGeometry(inner.marginsAdded(place.insets));
    }
}

} // namespace Linux
