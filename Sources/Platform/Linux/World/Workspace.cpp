#include "Platform/AppKit/Workspace.h"

#include "Platform/Linux/Foundation/NotificationCenterNative.h"
#include "Platform/Linux/Native.h"
#include "SystemEvents.h"

namespace NS {

namespace {

struct WorkspaceNative : Native {
    NotificationCenter center = makeNotificationCenter();
    SystemEvents events{center};
};

} // namespace

const std::string& WorkspaceDidWakeNotification() {
    static const std::string name = "NSWorkspaceDidWakeNotification";
    return name;
}

Workspace Workspace::sharedWorkspace() {
    // Never destroyed: handles may live as long as the process.
    static const auto& workspace = *new Workspace(Bridge::handle<Workspace>(std::make_shared<WorkspaceNative>()));
    return workspace;
}

NotificationCenter Workspace::notificationCenter() const {
    return Bridge::native<WorkspaceNative>(*this).center;
}

} // namespace NS
