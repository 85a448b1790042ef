#include "Platform/AppKit/LayoutConstraint.h"

#include "Platform/macOS/Conversions.h"

#import <AppKit/AppKit.h>

namespace NS {

using namespace macOS;

void LayoutConstraint::activateConstraints(const std::vector<LayoutConstraint>& constraints) {
    [NSLayoutConstraint activateConstraints:toNSArray(constraints)];
}

double LayoutConstraint::constant() const {
    return [object<NSLayoutConstraint>(*this) constant];
}

bool LayoutConstraint::isActive() const {
    return [object<NSLayoutConstraint>(*this) isActive];
}

LayoutConstraint LayoutXAxisAnchor::constraintEqualToAnchor(const LayoutXAxisAnchor& anchor) const {
    return handle<LayoutConstraint>(
        [object<NSLayoutXAxisAnchor>(*this) constraintEqualToAnchor:object<NSLayoutXAxisAnchor>(anchor)]);
}

LayoutConstraint LayoutXAxisAnchor::constraintGreaterThanOrEqualToAnchor(const LayoutXAxisAnchor& anchor,
                                                                         double constant) const {
    return handle<LayoutConstraint>([object<NSLayoutXAxisAnchor>(*this)
        constraintGreaterThanOrEqualToAnchor:object<NSLayoutXAxisAnchor>(anchor)
                                    constant:constant]);
}

LayoutConstraint LayoutXAxisAnchor::constraintLessThanOrEqualToAnchor(const LayoutXAxisAnchor& anchor,
                                                                      double constant) const {
    return handle<LayoutConstraint>([object<NSLayoutXAxisAnchor>(*this)
        constraintLessThanOrEqualToAnchor:object<NSLayoutXAxisAnchor>(anchor)
                                 constant:constant]);
}

LayoutConstraint LayoutYAxisAnchor::constraintEqualToAnchor(const LayoutYAxisAnchor& anchor, double constant) const {
    return handle<LayoutConstraint>([object<NSLayoutYAxisAnchor>(*this)
        constraintEqualToAnchor:object<NSLayoutYAxisAnchor>(anchor)
                       constant:constant]);
}

LayoutConstraint LayoutDimension::constraintEqualToConstant(double constant) const {
    return handle<LayoutConstraint>([object<NSLayoutDimension>(*this) constraintEqualToConstant:constant]);
}

} // namespace NS
