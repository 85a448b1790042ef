#include "Platform/AppKit/View.h"

#include "Platform/macOS/Conversions.h"

#import <AppKit/AppKit.h>

namespace NS {

void View::setTranslatesAutoresizingMaskIntoConstraints(bool translates) {
    [object<NSView>(*this) setTranslatesAutoresizingMaskIntoConstraints:translates];
}

bool View::translatesAutoresizingMaskIntoConstraints() const {
    return [object<NSView>(*this) translatesAutoresizingMaskIntoConstraints];
}

LayoutDimension View::widthAnchor() const {
    return handle<LayoutDimension>([object<NSView>(*this) widthAnchor]);
}

LayoutDimension View::heightAnchor() const {
    return handle<LayoutDimension>([object<NSView>(*this) heightAnchor]);
}

Size View::fittingSize() const {
    return toSize([object<NSView>(*this) fittingSize]);
}

} // namespace NS
