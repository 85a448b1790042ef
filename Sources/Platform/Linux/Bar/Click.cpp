#include "Platform/Linux/Bar/Click.h"

namespace Linux {

void deliverLater(const Click& click, StatusItemNative& item, QObject* presenter) {
    const Event event{click.type, click.control ? EventModifierFlags::Control : EventModifierFlags::None};
    const auto deliver = [&item, event, where = click.where] {
        const auto alive = item.shared_from_this(); // the action may let go of the item
        alive->mouseUp(event, where);
    };
    QMetaObject::invokeMethod(presenter, deliver, Qt::QueuedConnection);
}

} // namespace Linux
