#pragma once

#include "Platform/AppKit/View.h"

#include <vector>

namespace NS {

enum class UserInterfaceLayoutOrientation : long { Horizontal = 0, Vertical = 1 };
enum class LayoutAttribute : long { Leading = 5, CenterX = 9 };

/// Views in a row or column (NSStackView).
class StackView : public View {
public:
    static StackView stackViewWithViews(const std::vector<View>& views);

    std::vector<View> arrangedSubviews() const;

    void setOrientation(UserInterfaceLayoutOrientation orientation);
    UserInterfaceLayoutOrientation orientation() const;
    /// Across the stack's direction.
    void setAlignment(LayoutAttribute alignment);
    LayoutAttribute alignment() const;
    void setSpacing(double spacing);
    double spacing() const;
    void setCustomSpacing(double spacing, const View& view);
    double customSpacingAfterView(const View& view) const;
    void setEdgeInsets(const EdgeInsets& insets);
    EdgeInsets edgeInsets() const;

    using View::View;
};

} // namespace NS
