#pragma once

#include "Platform/AppKit/Event.h"
#include "Platform/AppKit/Window.h"
#include "Platform/Foundation/NotificationCenter.h"
#include "Platform/Foundation/Object.h"

#include <memory>
#include <optional>
#include <vector>

namespace NS {

enum class ApplicationActivationPolicy : long { Regular = 0, Accessory = 1, Prohibited = 2 };

class ApplicationDelegate {
public:
    virtual ~ApplicationDelegate() = default;
    virtual void applicationDidFinishLaunching(const Notification& notification) = 0;
    virtual void applicationWillTerminate(const Notification& notification) = 0;
    /// The user started the application a second time. True leaves it to AppKit to open what it thinks fit.
    virtual bool applicationShouldHandleReopen(bool /*hasVisibleWindows*/) { return true; }
};

/// The running application and its event loop (NSApplication). Main thread only.
class Application : public Object {
public:
    static Application& sharedApplication();

    bool setActivationPolicy(ApplicationActivationPolicy policy);
    ApplicationActivationPolicy activationPolicy() const;

    /// Not kept alive by the application: the caller does.
    void setDelegate(const std::shared_ptr<ApplicationDelegate>& delegate);

    /// Tells the delegate that launching is finished, then handles events until the application terminates. The
    /// macOS application ends the process without returning.
    void run();

    /// Ends the event loop after telling the delegate. Also how the session's end and, on Linux, SIGTERM, SIGINT
    /// and SIGHUP end it.
    void terminate();

    /// The event being handled, if one is.
    std::optional<Event> currentEvent() const;

    /// The windows there are, shown or not.
    std::vector<Window> windows() const;

    void activateIgnoringOtherApps(bool ignoring);

    using Object::Object;
};

} // namespace NS
