#pragma once

#include "Platform/Foundation/Object.h"

#include <vector>

namespace NS {

/// A rule between two edges, or for one length (NSLayoutConstraint). Without effect until activated.
class LayoutConstraint : public Object {
public:
    static void activateConstraints(const std::vector<LayoutConstraint>& constraints);

    double constant() const;
    bool isActive() const;

    using Object::Object;
};

/// A view's leading or trailing edge, or its horizontal center, as one side of a constraint
/// (NSLayoutXAxisAnchor). Here the other side is the superview's.
class LayoutXAxisAnchor : public Object {
public:
    LayoutConstraint constraintEqualToAnchor(const LayoutXAxisAnchor& anchor) const;
    LayoutConstraint constraintGreaterThanOrEqualToAnchor(const LayoutXAxisAnchor& anchor, double constant) const;
    LayoutConstraint constraintLessThanOrEqualToAnchor(const LayoutXAxisAnchor& anchor, double constant) const;

    using Object::Object;
};

/// A view's upper or lower edge (NSLayoutYAxisAnchor). Downwards is the positive direction.
class LayoutYAxisAnchor : public Object {
public:
    LayoutConstraint constraintEqualToAnchor(const LayoutYAxisAnchor& anchor, double constant) const;

    using Object::Object;
};

/// A view's width or height as one side of a constraint (NSLayoutDimension).
class LayoutDimension : public Object {
public:
    LayoutConstraint constraintEqualToConstant(double constant) const;

    using Object::Object;
};

} // namespace NS
