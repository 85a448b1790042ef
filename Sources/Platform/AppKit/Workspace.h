#pragma once

#include "Platform/Foundation/NotificationCenter.h"
#include "Platform/Foundation/Object.h"

#include <string>

namespace NS {

namespace NotificationName {
/// Posted on the workspace's own center when the machine has woken from sleep.
const std::string& WorkspaceDidWake();
} // namespace NotificationName

/// What the desktop tells its applications (NSWorkspace).
class Workspace : public Object {
public:
    static Workspace sharedWorkspace();

    NotificationCenter notificationCenter() const;

    using Object::Object;
};

} // namespace NS
