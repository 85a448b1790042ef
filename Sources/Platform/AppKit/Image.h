#pragma once

#include "Platform/Foundation/Geometry.h"
#include "Platform/Foundation/Object.h"

#include <functional>

namespace NS {

/// A picture drawn on demand (NSImage).
class Image : public Object {
public:
    /// `handler` draws into the rectangle it is given, in points, and says whether it could; it runs each time the
    /// picture is needed at another resolution or appearance, possibly later and on another thread, so it may use only
    /// what it captured by value. Not flipped: y grows upwards.
    static Image imageWithSize(const Size& size, bool flipped, std::function<bool(const Rect&)> handler);

    Size size() const;

    /// A template's colors do not matter, only its opacity: it is tinted to fit what it stands on.
    void setTemplate(bool isTemplate);
    bool isTemplate() const;

    using Object::Object;
};

} // namespace NS
