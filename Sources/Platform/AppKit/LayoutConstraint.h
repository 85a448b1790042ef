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

/// A view's width or height as one side of a constraint (NSLayoutDimension).
class LayoutDimension : public Object {
public:
    LayoutConstraint constraintEqualToConstant(double constant) const;

    using Object::Object;
};

} // namespace NS
