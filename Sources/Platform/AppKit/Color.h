#pragma once

#include "Platform/Foundation/Object.h"

namespace NS {

/// A color (NSColor): fixed, or one of the system's, which follow the light or dark appearance where they are drawn.
/// Safe from any thread.
class Color : public Object {
public:
    /// Components from 0 to 1.
    static Color colorWithCalibratedRed(double red, double green, double blue, double alpha);
    static Color blackColor();
    static Color labelColor();
    static Color secondaryLabelColor();
    static Color tertiaryLabelColor();

    /// What paths are filled, or stroked, with from here on in the current drawing.
    void setFill() const;
    void setStroke() const;

    /// Of a color made from components only.
    double redComponent() const;
    double greenComponent() const;
    double blueComponent() const;
    double alphaComponent() const;

    using Object::Object;
};

} // namespace NS
