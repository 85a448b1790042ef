#include "Platform/Foundation/AffineTransform.h"

#include "Platform/macOS/Conversions.h"

namespace NS {

using namespace macOS;

AffineTransform AffineTransform::transform() {
    return handle<AffineTransform>([NSAffineTransform transform]);
}

void AffineTransform::translateXBy(double x, double y) {
    [object<NSAffineTransform>(*this) translateXBy:x yBy:y];
}

void AffineTransform::scaleBy(double factor) {
    [object<NSAffineTransform>(*this) scaleBy:factor];
}

} // namespace NS
