#include "Platform/AppKit/Workspace.h"

#include "Platform/Linux/AppKit/WorkspaceNative.h"
#include "Platform/Linux/Foundation/NotificationCenterNative.h"
#include "Platform/Linux/Native.h"

namespace NS {

namespace {

struct WorkspaceNative : Native {
    NotificationCenter center = makeNotificationCenter();
    const std::shared_ptr<void> watch = watchSystem(center);
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
