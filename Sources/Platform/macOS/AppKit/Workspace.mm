#include "Platform/AppKit/Workspace.h"

#include "Platform/macOS/Conversions.h"

#import <AppKit/AppKit.h>

namespace NS {

using namespace macOS;

const std::string& NotificationName::WorkspaceDidWake() {
    static const std::string name = toString(NSWorkspaceDidWakeNotification);
    return name;
}

Workspace Workspace::sharedWorkspace() {
    return handle<Workspace>([NSWorkspace sharedWorkspace]);
}

NotificationCenter Workspace::notificationCenter() const {
    return handle<NotificationCenter>([object<NSWorkspace>(*this) notificationCenter]);
}

} // namespace NS
