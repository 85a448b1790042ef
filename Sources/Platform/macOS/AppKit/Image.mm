#include "Platform/AppKit/Image.h"

#include "Platform/macOS/Conversions.h"

#import <AppKit/AppKit.h>

namespace NS {

using namespace macOS;

Image Image::imageWithSize(const Size& size, bool flipped, std::function<bool(const Rect&)> handler) {
    // The block copies the handler, and the image keeps the block: it may draw later and on any thread.
    return handle<Image>([NSImage imageWithSize:toNSSize(size)
                                        flipped:flipped
                                 drawingHandler:^BOOL(NSRect rect) {
                                     return enter(handler, toRect(rect));
                                 }]);
}

Size Image::size() const {
    return toSize([object<NSImage>(*this) size]);
}

void Image::setTemplate(bool isTemplate) {
    [object<NSImage>(*this) setTemplate:isTemplate];
}

bool Image::isTemplate() const {
    return [object<NSImage>(*this) isTemplate];
}

} // namespace NS
