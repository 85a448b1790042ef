#include "Platform/Foundation/AffineTransform.h"

#include "Platform/macOS/Conversions.h"

namespace NS {

AffineTransform AffineTransform::transform() {
    return handle<AffineTransform>([NSAffineTransform transform]);
}

void AffineTransform::translateXByYBy(double x, double y) {
    [object<NSAffineTransform>(*this) translateXBy:x yBy:y];
}

void AffineTransform::scaleBy(double factor) {
    [object<NSAffineTransform>(*this) scaleBy:factor];
}

} // namespace NS
