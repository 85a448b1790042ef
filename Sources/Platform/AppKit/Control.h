#pragma once

#include "Platform/AppKit/View.h"

#include <functional>

namespace NS {

enum class ControlStateValue : long { Off = 0, On = 1 };

/// A view that the user acts on (NSControl).
class Control : public View {
public:
    /// What the control does when the user has acted on it. The control keeps the action: it must hold its owner
    /// weakly.
    void setAction(std::function<void()> action);

    void setEnabled(bool enabled);
    bool isEnabled() const;

    using View::View;
};

} // namespace NS
