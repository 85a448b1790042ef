#include "Platform/AppKit/LayoutConstraint.h"

#include "Platform/Linux/AppKit/Anchors.h"
#include "Platform/Linux/AppKit/EdgeLayout.h"
#include "Platform/Linux/AppKit/ViewNative.h"

#include <cmath>
#include <functional>
#include <utility>

namespace Linux {

namespace {

struct DimensionNative : Native {
    std::weak_ptr<ViewNative> view;
    Qt::Orientation orientation = Qt::Horizontal;
};

struct ConstraintNative : Native {
    ConstraintNative(double constant, std::function<void(int)> apply) : constant(constant), apply(std::move(apply)) {}

    const double constant;
    const std::function<void(int pixels)> apply;
    bool isActive = false;
};

/// Between the same edge of a view and of its superview. A minimum distance counts as an exact one: nothing here pulls
/// a view away from the edge.
LayoutConstraint edgeConstraint(const Object& anchor, const Object& ofSuperview, double constant) {
    const auto& inner = object<AnchorNative>(anchor);
    const auto& outer = object<AnchorNative>(ofSuperview);
    const auto apply = [weakView = inner.view, weakSuperview = outer.view, edge = inner.edge](int pixels) {
        const auto view = weakView.lock();
        const auto superview = weakSuperview.lock();
        if (view && superview && view->widget && superview->widget) {
            EdgeLayout::of(*superview->widget).constrain(*view, edge, pixels);
        }
    };
    return handle<LayoutConstraint>(std::make_shared<ConstraintNative>(constant, apply));
}

} // namespace

LayoutDimension makeDimension(const std::shared_ptr<ViewNative>& view, Qt::Orientation orientation) {
    auto native = std::make_shared<DimensionNative>();
    native->view = view;
    native->orientation = orientation;
    return handle<LayoutDimension>(std::move(native));
}

} // namespace Linux

namespace NS {

using namespace Linux;

LayoutConstraint LayoutDimension::constraintEqualToConstant(double constant) const {
    const auto& self = object<DimensionNative>(*this);
    const auto apply = [weak = self.view, isWidth = self.orientation == Qt::Horizontal](int pixels) {
        if (const auto view = weak.lock(); view && view->widget) {
            isWidth ? view->widget->setFixedWidth(pixels) : view->widget->setFixedHeight(pixels);
        }
    };
    return handle<LayoutConstraint>(std::make_shared<ConstraintNative>(constant, apply));
}

LayoutConstraint LayoutXAxisAnchor::constraintEqualToAnchor(const LayoutXAxisAnchor& anchor) const {
    return edgeConstraint(*this, anchor, 0);
}

LayoutConstraint LayoutXAxisAnchor::constraintGreaterThanOrEqualToAnchor(const LayoutXAxisAnchor& anchor,
                                                                         double constant) const {
    return edgeConstraint(*this, anchor, constant);
}

LayoutConstraint LayoutXAxisAnchor::constraintLessThanOrEqualToAnchor(const LayoutXAxisAnchor& anchor,
                                                                      double constant) const {
    return edgeConstraint(*this, anchor, constant);
}

LayoutConstraint LayoutYAxisAnchor::constraintEqualToAnchor(const LayoutYAxisAnchor& anchor, double constant) const {
    return edgeConstraint(*this, anchor, constant);
}

void LayoutConstraint::activateConstraints(const std::vector<LayoutConstraint>& constraints) {
    for (const auto& constraint : constraints) {
        auto& native = object<ConstraintNative>(constraint);
        native.isActive = true;
        native.apply(static_cast<int>(std::lround(native.constant)));
    }
}

double LayoutConstraint::constant() const {
    return object<ConstraintNative>(*this).constant;
}

bool LayoutConstraint::isActive() const {
    return object<ConstraintNative>(*this).isActive;
}

} // namespace NS
