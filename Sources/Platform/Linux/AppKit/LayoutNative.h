#pragma once

#include "Platform/AppKit/LayoutConstraint.h"
#include "Platform/Linux/Native.h"

#include <Qt>
#include <memory>

namespace NS {

struct ViewNative;

/// One of a view's two lengths, as a side of a constraint.
LayoutDimension makeDimension(std::shared_ptr<ViewNative> view, Qt::Orientation orientation);

} // namespace NS
