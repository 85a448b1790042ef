#include "Platform/AppKit/ImageView.h"

#include "Platform/macOS/Conversions.h"

#import <AppKit/AppKit.h>

namespace NS {

using namespace macOS;

ImageView ImageView::imageViewWithImage(const Image& image) {
    return handle<ImageView>([NSImageView imageViewWithImage:object<NSImage>(image)]);
}

Image ImageView::image() const {
    return handle<Image>([object<NSImageView>(*this) image]);
}

} // namespace NS
