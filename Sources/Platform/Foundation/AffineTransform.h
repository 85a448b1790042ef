#pragma once

#include "Platform/Foundation/Object.h"

namespace NS {

/// A change of coordinates (NSAffineTransform). Each call is applied before those made earlier. Any thread, one at a
/// time.
class AffineTransform : public Object {
public:
    static AffineTransform transform(); // identity

    void translateXBy(double x, double y);
    void scaleBy(double factor);

    using Object::Object;
};

} // namespace NS
