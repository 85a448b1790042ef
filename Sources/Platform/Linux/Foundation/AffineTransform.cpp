#include "Platform/Foundation/AffineTransform.h"

#include "Platform/Linux/Foundation/AffineTransformNative.h"

namespace NS {

AffineTransform AffineTransform::transform() {
    return Bridge::handle<AffineTransform>(std::make_shared<AffineTransformNative>());
}

void AffineTransform::translateXByYBy(double x, double y) {
    Bridge::native<AffineTransformNative>(*this).transform.translate(x, y);
}

void AffineTransform::scaleBy(double factor) {
    Bridge::native<AffineTransformNative>(*this).transform.scale(factor, factor);
}

} // namespace NS
