#pragma once

#include "Platform/AppKit/LayoutConstraint.h"
#include "Platform/Foundation/Geometry.h"
#include "Platform/Foundation/Object.h"

namespace NS {

/// A rectangle of a window (NSView). A view keeps its subviews alive.
class View : public Object {
public:
    void setTranslatesAutoresizingMaskIntoConstraints(bool translates);
    bool translatesAutoresizingMaskIntoConstraints() const;

    LayoutDimension widthAnchor() const;
    LayoutDimension heightAnchor() const;

    /// The smallest size that satisfies the view's own layout.
    Size fittingSize() const;

    using Object::Object;
};

} // namespace NS
