#include "Platform/Foundation/AffineTransform.h"

#include "Platform/Linux/Foundation/AffineTransformNative.h"

namespace NS {

using namespace Linux;

AffineTransform AffineTransform::transform() {
    return handle<AffineTransform>(std::make_shared<AffineTransformNative>());
}

void AffineTransform::translateXBy(double x, double y) {
    native(*this).transform.translate(x, y);
}

void AffineTransform::scaleBy(double factor) {
    native(*this).transform.scale(factor, factor);
}

} // namespace NS
