#pragma once

#include "Platform/AppKit/Control.h"

#include <string>
#include <vector>

namespace NS {

/// One of several items, chosen from a menu (NSPopUpButton). Of what AppKit's has from NSButton nothing is here.
class PopUpButton : public Control {
public:
    static PopUpButton initWithFrame(const Rect& frame, bool pullsDown);

    void addItemsWithTitles(const std::vector<std::string>& titles);
    std::vector<std::string> itemTitles() const;

    /// Does not run the action.
    void selectItemAtIndex(long index);
    /// -1 when none is selected.
    long indexOfSelectedItem() const;

    using Control::Control;
};

} // namespace NS
