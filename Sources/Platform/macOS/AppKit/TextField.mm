#include "Platform/AppKit/TextField.h"

#include "Platform/macOS/Conversions.h"

#import <AppKit/AppKit.h>

namespace macOS {

namespace {

// By name, since the numbers depend on the processor: AppKit's center is 2 on Intel and 1 elsewhere.
NSTextAlignment toNSTextAlignment(TextAlignment alignment) {
    switch (alignment) {
    case TextAlignment::Left:
        return NSTextAlignmentLeft;
    case TextAlignment::Center:
        return NSTextAlignmentCenter;
    case TextAlignment::Right:
        return NSTextAlignmentRight;
    }
}

TextAlignment toTextAlignment(NSTextAlignment alignment) {
    if (alignment == NSTextAlignmentCenter) {
        return TextAlignment::Center;
    }
    return alignment == NSTextAlignmentRight ? TextAlignment::Right : TextAlignment::Left;
}

} // namespace

} // namespace macOS

namespace NS {

using namespace macOS;

TextField TextField::labelWithString(const std::string& text) {
    return handle<TextField>([NSTextField labelWithString:toNSString(text)]);
}

TextField TextField::wrappingLabelWithString(const std::string& text) {
    return handle<TextField>([NSTextField wrappingLabelWithString:toNSString(text)]);
}

void TextField::setStringValue(const std::string& text) {
    [object<NSTextField>(*this) setStringValue:toNSString(text)];
}

std::string TextField::stringValue() const {
    return toString([object<NSTextField>(*this) stringValue]);
}

void TextField::setFont(const Font& font) {
    [object<NSTextField>(*this) setFont:object<NSFont>(font)];
}

Font TextField::font() const {
    return handle<Font>([object<NSTextField>(*this) font]);
}

void TextField::setTextColor(const Color& color) {
    [object<NSTextField>(*this) setTextColor:object<NSColor>(color)];
}

Color TextField::textColor() const {
    return handle<Color>([object<NSTextField>(*this) textColor]);
}

void TextField::setAlignment(TextAlignment alignment) {
    [object<NSTextField>(*this) setAlignment:toNSTextAlignment(alignment)];
}

TextAlignment TextField::alignment() const {
    return toTextAlignment([object<NSTextField>(*this) alignment]);
}

void TextField::setPreferredMaxLayoutWidth(double width) {
    [object<NSTextField>(*this) setPreferredMaxLayoutWidth:width];
}

double TextField::preferredMaxLayoutWidth() const {
    return [object<NSTextField>(*this) preferredMaxLayoutWidth];
}

} // namespace NS
