#include "Platform/AppKit/Workspace.h"

#include "Platform/Linux/Foundation/NotificationCenterNative.h"
#include "Platform/Linux/Native.h"
#include "Platform/Linux/Seam.h"
#include "Platform/NoDestructor.h"

namespace Linux {

namespace {

struct WorkspaceNative : Native {
    NotificationCenter center = handle<NotificationCenter>(std::make_shared<NotificationCenterNative>());
    const std::shared_ptr<void> watch = watchSystem(center);
};

} // namespace

} // namespace Linux

namespace NS {

using namespace Linux;

const std::string& NotificationName::WorkspaceDidWake() {
    static const std::string name = "NSWorkspaceDidWakeNotification";
    return name;
}

Workspace Workspace::sharedWorkspace() {
    static NoDestructor<Workspace> workspace(handle<Workspace>(std::make_shared<WorkspaceNative>()));
    return *workspace;
}

NotificationCenter Workspace::notificationCenter() const {
    return object<WorkspaceNative>(*this).center;
}

} // namespace NS
