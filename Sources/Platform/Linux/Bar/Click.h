#pragma once

#include "Platform/Linux/AppKit/StatusItemNative.h"

#include <QObject>

namespace Linux {

/// A click as a panel reports it; `where` is on the screen, in logical pixels.
struct Click {
    EventType type;
    bool control;
    QPoint where;
};

/// Brings the item a click once the event loop is back, unless `presenter` is gone by then: what reported the click
/// need not wait for a menu to close.
void deliverLater(const Click& click, StatusItemNative& item, QObject* presenter);

} // namespace Linux
