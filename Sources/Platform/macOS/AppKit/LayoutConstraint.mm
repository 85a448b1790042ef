#include "Platform/AppKit/LayoutConstraint.h"

#include "Platform/macOS/Conversions.h"

#import <AppKit/AppKit.h>

namespace NS {

void LayoutConstraint::activateConstraints(const std::vector<LayoutConstraint>& constraints) {
    [NSLayoutConstraint activateConstraints:toNSArray(constraints)];
}

double LayoutConstraint::constant() const {
    return [object<NSLayoutConstraint>(*this) constant];
}

bool LayoutConstraint::isActive() const {
    return [object<NSLayoutConstraint>(*this) isActive];
}

LayoutConstraint LayoutDimension::constraintEqualToConstant(double constant) const {
    return handle<LayoutConstraint>([object<NSLayoutDimension>(*this) constraintEqualToConstant:constant]);
}

} // namespace NS
