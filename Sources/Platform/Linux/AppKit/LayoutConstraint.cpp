#include "Platform/AppKit/LayoutConstraint.h"

#include "Platform/Linux/AppKit/LayoutNative.h"
#include "Platform/Linux/AppKit/ViewNative.h"

#include <cmath>

namespace NS {

namespace {

struct DimensionNative : Native {
    std::weak_ptr<ViewNative> view;
    Qt::Orientation orientation = Qt::Horizontal;
};

struct ConstraintNative : Native {
    std::shared_ptr<DimensionNative> dimension;
    double constant = 0;
    bool isActive = false;

    void activate() {
        isActive = true;
        const auto view = dimension->view.lock();
        if (!view || !view->widget) {
            return;
        }
        const int length = static_cast<int>(std::lround(constant));
        if (dimension->orientation == Qt::Horizontal) {
            view->widget->setFixedWidth(length);
        } else {
            view->widget->setFixedHeight(length);
        }
    }
};

} // namespace

LayoutDimension makeDimension(std::shared_ptr<ViewNative> view, Qt::Orientation orientation) {
    auto native = std::make_shared<DimensionNative>();
    native->view = std::move(view);
    native->orientation = orientation;
    return Bridge::handle<LayoutDimension>(std::move(native));
}

LayoutConstraint LayoutDimension::constraintEqualToConstant(double constant) const {
    auto native = std::make_shared<ConstraintNative>();
    native->dimension = Bridge::shared<DimensionNative>(*this);
    native->constant = constant;
    return Bridge::handle<LayoutConstraint>(std::move(native));
}

void LayoutConstraint::activateConstraints(const std::vector<LayoutConstraint>& constraints) {
    for (const auto& constraint : constraints) {
        Bridge::native<ConstraintNative>(constraint).activate();
    }
}

double LayoutConstraint::constant() const {
    return Bridge::native<ConstraintNative>(*this).constant;
}

bool LayoutConstraint::isActive() const {
    return Bridge::native<ConstraintNative>(*this).isActive;
}

} // namespace NS
