#include "Platform/AppKit/StackView.h"

#include "Platform/Linux/AppKit/ViewNative.h"

#include <QBoxLayout>
#include <cmath>
#include <map>

namespace Linux {

namespace {

struct StackViewNative : ViewNative {
    StackViewNative() : ViewNative(new QWidget) {}

    std::vector<View> views;
    UserInterfaceLayoutOrientation orientation = UserInterfaceLayoutOrientation::Horizontal;
    LayoutAttribute alignment = LayoutAttribute::CenterX;
    double spacing = 8;
    std::map<const ViewNative*, double> customSpacing;
    EdgeInsets insets;

    double spacingAfter(const View& view) const {
        const auto custom = customSpacing.find(&native(view));
        return custom == customSpacing.end() ? spacing : custom->second;
    }

    // Small enough to be made anew at each change.
    void layOut() {
        delete widget->layout();
        const bool vertical = orientation == UserInterfaceLayoutOrientation::Vertical;
        auto* box = new QBoxLayout(vertical ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight, widget);
        box->setSpacing(0);
        box->setContentsMargins(pixels(insets.left), pixels(insets.top), pixels(insets.right), pixels(insets.bottom));
        const auto across = alignment == LayoutAttribute::Leading ? Qt::AlignLeading : Qt::AlignHCenter;
        for (const auto& view : views) {
            box->addWidget(native(view).widget, 0, vertical ? across : Qt::AlignVCenter);
            if (!(view == views.back())) {
                box->addSpacing(pixels(spacingAfter(view)));
            }
        }
    }

    static int pixels(double points) { return static_cast<int>(std::lround(points)); }
};

} // namespace

template <>
struct NativeOf<StackView> : std::type_identity<StackViewNative> {};

} // namespace Linux

namespace NS {

using namespace Linux;

StackView StackView::stackViewWithViews(const std::vector<View>& views) {
    auto native = std::make_shared<StackViewNative>();
    native->views = views;
    for (const auto& view : views) {
        native->adopt(shared(view));
    }
    native->layOut();
    return handle<StackView>(std::move(native));
}

std::vector<View> StackView::arrangedSubviews() const {
    return native(*this).views;
}

void StackView::setOrientation(UserInterfaceLayoutOrientation orientation) {
    native(*this).orientation = orientation;
    native(*this).layOut();
}

UserInterfaceLayoutOrientation StackView::orientation() const {
    return native(*this).orientation;
}

void StackView::setAlignment(LayoutAttribute alignment) {
    native(*this).alignment = alignment;
    native(*this).layOut();
}

LayoutAttribute StackView::alignment() const {
    return native(*this).alignment;
}

void StackView::setSpacing(double spacing) {
    native(*this).spacing = spacing;
    native(*this).layOut();
}

double StackView::spacing() const {
    return native(*this).spacing;
}

void StackView::setCustomSpacing(double spacing, const View& view) {
    native(*this).customSpacing[&native(view)] = spacing;
    native(*this).layOut();
}

double StackView::customSpacingAfterView(const View& view) const {
    return native(*this).spacingAfter(view);
}

void StackView::setEdgeInsets(const EdgeInsets& insets) {
    native(*this).insets = insets;
    native(*this).layOut();
}

EdgeInsets StackView::edgeInsets() const {
    return native(*this).insets;
}

} // namespace NS
