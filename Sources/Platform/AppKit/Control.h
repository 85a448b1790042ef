#pragma once

#include "Platform/AppKit/View.h"

#include <functional>

namespace NS {

/// A view that the user acts on (NSControl).
class Control : public View {
public:
    /// What the control does when the user has acted on it. The control keeps the action: it must hold its owner
    /// weakly.
    void setAction(std::function<void()> action);

    using View::View;
};

} // namespace NS
