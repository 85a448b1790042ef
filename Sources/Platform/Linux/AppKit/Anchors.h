#pragma once

#include "Platform/AppKit/LayoutConstraint.h"
#include "Platform/Linux/Native.h"

#include <Qt>
#include <memory>

namespace Linux {

struct ViewNative;

enum class Edge { Leading, Trailing, CenterX, Top, Bottom };

struct AnchorNative : Native {
    AnchorNative(const std::shared_ptr<ViewNative>& view, Edge edge) : view(view), edge(edge) {}

    std::weak_ptr<ViewNative> view;
    Edge edge;
};

/// One of a view's edges, or its middle, as a side of a constraint.
template <class Anchor>
Anchor makeAnchor(const std::shared_ptr<ViewNative>& view, Edge edge) {
    return handle<Anchor>(std::make_shared<AnchorNative>(view, edge));
}

/// One of a view's two lengths, as a side of a constraint.
LayoutDimension makeDimension(const std::shared_ptr<ViewNative>& view, Qt::Orientation orientation);

} // namespace Linux
