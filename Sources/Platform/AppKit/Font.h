#pragma once

#include "Platform/Foundation/Object.h"

namespace NS {

/// Weights on AppKit's scale from -1 to 1 (NSFontWeight).
enum class FontWeight { Regular, Semibold };

/// A font in points (NSFont).
class Font : public Object {
public:
    static Font systemFontOfSize(double size);
    static Font systemFontOfSize(double size, FontWeight weight);
    static double smallSystemFontSize();

    double pointSize() const;

    using Object::Object;
};

} // namespace NS
