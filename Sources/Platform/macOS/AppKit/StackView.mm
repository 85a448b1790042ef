#include "Platform/AppKit/StackView.h"

#include "Platform/macOS/Conversions.h"

#import <AppKit/AppKit.h>

namespace NS {

using namespace macOS;

static_assert(static_cast<long>(UserInterfaceLayoutOrientation::Horizontal) ==
              NSUserInterfaceLayoutOrientationHorizontal);
static_assert(static_cast<long>(UserInterfaceLayoutOrientation::Vertical) == NSUserInterfaceLayoutOrientationVertical);
static_assert(static_cast<long>(LayoutAttribute::Leading) == NSLayoutAttributeLeading);
static_assert(static_cast<long>(LayoutAttribute::CenterX) == NSLayoutAttributeCenterX);

StackView StackView::stackViewWithViews(const std::vector<View>& views) {
    return handle<StackView>([NSStackView stackViewWithViews:toNSArray(views)]);
}

std::vector<View> StackView::arrangedSubviews() const {
    return toHandles<View>([object<NSStackView>(*this) arrangedSubviews]);
}

void StackView::setOrientation(UserInterfaceLayoutOrientation orientation) {
    [object<NSStackView>(*this) setOrientation:static_cast<NSUserInterfaceLayoutOrientation>(orientation)];
}

UserInterfaceLayoutOrientation StackView::orientation() const {
    return static_cast<UserInterfaceLayoutOrientation>([object<NSStackView>(*this) orientation]);
}

void StackView::setAlignment(LayoutAttribute alignment) {
    [object<NSStackView>(*this) setAlignment:static_cast<NSLayoutAttribute>(alignment)];
}

LayoutAttribute StackView::alignment() const {
    return static_cast<LayoutAttribute>([object<NSStackView>(*this) alignment]);
}

void StackView::setSpacing(double spacing) {
    [object<NSStackView>(*this) setSpacing:spacing];
}

double StackView::spacing() const {
    return [object<NSStackView>(*this) spacing];
}

void StackView::setCustomSpacing(double spacing, const View& view) {
    [object<NSStackView>(*this) setCustomSpacing:spacing afterView:object<NSView>(view)];
}

double StackView::customSpacingAfterView(const View& view) const {
    return [object<NSStackView>(*this) customSpacingAfterView:object<NSView>(view)];
}

void StackView::setEdgeInsets(const EdgeInsets& insets) {
    [object<NSStackView>(*this) setEdgeInsets:{insets.top, insets.left, insets.bottom, insets.right}];
}

EdgeInsets StackView::edgeInsets() const {
    const NSEdgeInsets insets = [object<NSStackView>(*this) edgeInsets];
    return {insets.top, insets.left, insets.bottom, insets.right};
}

} // namespace NS
