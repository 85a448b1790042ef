#include "Platform/AppKit/LayoutConstraint.h"

#include "Platform/Linux/AppKit/Anchors.h"
#include "Platform/Linux/AppKit/EdgeLayout.h"
#include "Platform/Linux/AppKit/ViewNative.h"

#include <cmath>

namespace Linux {

namespace {

struct DimensionNative : Native {
    std::weak_ptr<ViewNative> view;
    Qt::Orientation orientation = Qt::Horizontal;
};

struct ConstraintNative : Native {
    double constant = 0;
    bool isActive = false;

    virtual void apply() const = 0;
    int pixels() const { return static_cast<int>(std::lround(constant)); }
};

struct LengthConstraint : ConstraintNative {
    std::shared_ptr<DimensionNative> dimension;

    void apply() const override {
        const auto view = dimension->view.lock();
        if (!view || !view->widget) {
            return;
        }
        if (dimension->orientation == Qt::Horizontal) {
            view->widget->setFixedWidth(pixels());
        } else {
            view->widget->setFixedHeight(pixels());
        }
    }
};

/// Between the same edge of a view and of its superview.
struct EdgeConstraint : ConstraintNative {
    std::shared_ptr<AnchorNative> anchor;
    std::shared_ptr<AnchorNative> ofSuperview;

    void apply() const override {
        const auto view = anchor->view.lock();
        const auto superview = ofSuperview->view.lock();
        if (view && superview && view->widget && superview->widget) {
            EdgeLayout::of(*superview->widget).constrain(*view, anchor->edge, pixels());
        }
    }
};

// A distance of at least so much is exactly so much wherever the view may be as large as it likes.
LayoutConstraint edgeConstraint(const Object& anchor, const Object& ofSuperview, double constant) {
    auto native = std::make_shared<EdgeConstraint>();
    native->anchor = sharedObject<AnchorNative>(anchor);
    native->ofSuperview = sharedObject<AnchorNative>(ofSuperview);
    native->constant = constant;
    return handle<LayoutConstraint>(std::move(native));
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
    auto native = std::make_shared<LengthConstraint>();
    native->dimension = sharedObject<DimensionNative>(*this);
    native->constant = constant;
    return handle<LayoutConstraint>(std::move(native));
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
        native.apply();
    }
}

double LayoutConstraint::constant() const {
    return object<ConstraintNative>(*this).constant;
}

bool LayoutConstraint::isActive() const {
    return object<ConstraintNative>(*this).isActive;
}

} // namespace NS
