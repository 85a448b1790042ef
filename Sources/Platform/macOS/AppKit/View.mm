#include "Platform/AppKit/View.h"

#include "Platform/macOS/Conversions.h"

#import <AppKit/AppKit.h>

// Every view has it, from a protocol of some hundred members.
@protocol PlatformAccessibility
- (void)setAccessibilityTitleUIElement:(nullable id)element;
@end

namespace NS {

using namespace macOS;

View View::initWithFrame(const Rect& frame) {
    return handle<View>([[NSView alloc] initWithFrame:toNSRect(frame)]);
}

void View::addSubview(const View& view) {
    [object<NSView>(*this) addSubview:object<NSView>(view)];
}

void View::setTranslatesAutoresizingMaskIntoConstraints(bool translates) {
    [object<NSView>(*this) setTranslatesAutoresizingMaskIntoConstraints:translates];
}

bool View::translatesAutoresizingMaskIntoConstraints() const {
    return [object<NSView>(*this) translatesAutoresizingMaskIntoConstraints];
}

LayoutXAxisAnchor View::leadingAnchor() const {
    return handle<LayoutXAxisAnchor>([object<NSView>(*this) leadingAnchor]);
}

LayoutXAxisAnchor View::trailingAnchor() const {
    return handle<LayoutXAxisAnchor>([object<NSView>(*this) trailingAnchor]);
}

LayoutXAxisAnchor View::centerXAnchor() const {
    return handle<LayoutXAxisAnchor>([object<NSView>(*this) centerXAnchor]);
}

LayoutYAxisAnchor View::topAnchor() const {
    return handle<LayoutYAxisAnchor>([object<NSView>(*this) topAnchor]);
}

LayoutYAxisAnchor View::bottomAnchor() const {
    return handle<LayoutYAxisAnchor>([object<NSView>(*this) bottomAnchor]);
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

void View::setAccessibilityTitleUIElement(const View& title) {
    [static_cast<id<PlatformAccessibility>>(object<NSView>(*this))
        setAccessibilityTitleUIElement:object<NSView>(title)];
}

} // namespace NS
