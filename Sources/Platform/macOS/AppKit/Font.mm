#include "Platform/AppKit/Font.h"

#include "Platform/macOS/Conversions.h"

#import <AppKit/AppKit.h>

namespace macOS {

namespace {

// AppKit's weights are not constants of the compiler.
NSFontWeight toNSFontWeight(FontWeight weight) {
    switch (weight) {
    case FontWeight::Regular:
        return NSFontWeightRegular;
    case FontWeight::Semibold:
        return NSFontWeightSemibold;
    }
}

} // namespace

} // namespace macOS

namespace NS {

using namespace macOS;

Font Font::systemFontOfSize(double size) {
    return handle<Font>([NSFont systemFontOfSize:size]);
}

Font Font::systemFontOfSize(double size, FontWeight weight) {
    return handle<Font>([NSFont systemFontOfSize:size weight:toNSFontWeight(weight)]);
}

double Font::smallSystemFontSize() {
    return [NSFont smallSystemFontSize];
}

double Font::pointSize() const {
    return [object<NSFont>(*this) pointSize];
}

} // namespace NS
