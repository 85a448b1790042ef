#pragma once

#include "Platform/AppKit/Event.h"
#include "Platform/AppKit/StatusItem.h"

#include <functional>
#include <vector>

/// The bar of the unit tests: it shows nothing, and its clicks come from the test.
namespace Seam {

/// The status items there are, oldest first.
std::vector<NS::StatusItem> statusItems();

/// Calls `note` before each status item that is made from now on.
void whenStatusItemIsMade(std::function<void()> note);

/// The user releases a mouse button over the item. Returns when everything that follows has happened.
void click(const NS::StatusItem& item, const NS::Event& event);

/// Gives the user `use` of the menu that opens next, then puts it away.
void whenMenuOpens(std::function<void(NS::StatusItem)> use);

/// How often the item's picture was changed.
int imageChanges(const NS::StatusItem& item);

} // namespace Seam
