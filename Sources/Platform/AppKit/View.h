#pragma once

#include "Platform/AppKit/LayoutConstraint.h"
#include "Platform/Foundation/Geometry.h"
#include "Platform/Foundation/Object.h"

namespace NS {

/// A rectangle of a window (NSView). A view keeps its subviews alive.
class View : public Object {
public:
    /// A plain one. A subview's frame is its superview's business as soon as constraints say where it is.
    static View initWithFrame(const Rect& frame);

    void addSubview(const View& view);

    void setTranslatesAutoresizingMaskIntoConstraints(bool translates);
    bool translatesAutoresizingMaskIntoConstraints() const;

    LayoutXAxisAnchor leadingAnchor() const;
    LayoutXAxisAnchor trailingAnchor() const;
    LayoutXAxisAnchor centerXAnchor() const;
    LayoutYAxisAnchor topAnchor() const;
    LayoutYAxisAnchor bottomAnchor() const;
    LayoutDimension widthAnchor() const;
    LayoutDimension heightAnchor() const;

    /// The smallest size that satisfies the view's own layout.
    Size fittingSize() const;

    /// The view whose text names this one to those who do not see it.
    void setAccessibilityTitleUIElement(const View& title);

    using Object::Object;
};

} // namespace NS
