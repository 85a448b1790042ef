#pragma once

#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/NotificationCenter.h"
#include "Platform/IOKit/IOPMLib.h"

#include <QObject>
#include <QTimeZone>
#include <functional>
#include <memory>
#include <string>

/// What this backend needs of the world outside. The product's world is the session and the kernel (Clock/, Bar/,
/// Power/, Appearance/); the unit tests link one of their own (Tests/Seam, with the same four parts). A world defines
/// every function here. Main thread only, where nothing else is said.
namespace Linux {

using namespace NS;

// Clock

/// The present instant. Safe from any thread.
Date now();

/// Calls back once when the wall clock reaches a time, at once when that is past. It lasts as long as it exists; the
/// callback may destroy it.
class Alarm {
public:
    virtual ~Alarm() = default;
};

std::unique_ptr<Alarm> makeAlarm(const Date& date, std::function<void()> callback);

/// Calls back once when that many seconds have passed, those not counted in which the machine sleeps.
void callAfter(double seconds, std::function<void()> callback);

/// An alarm for when that many seconds have passed, by a clock that is never set and goes on while the machine
/// sleeps.
std::unique_ptr<Alarm> makeDelay(double seconds, std::function<void()> callback);

/// The time zone in force, always a valid one. Cheap enough to ask at every use. Safe from any thread.
QTimeZone systemTimeZone();

/// Posts the machine's waking on the workspace's center, and changes of the clock and of the time zone on the default
/// one, as long as the result lives.
std::shared_ptr<void> watchSystem(const NotificationCenter& workspaceCenter);

// Bar

struct StatusItemNative;

/// What shows a status item in the session's bar, and brings it the user's clicks. It lives as long as its item.
class StatusItemPresenter {
public:
    virtual ~StatusItemPresenter() = default;
    virtual void imageChanged() = 0;
    virtual void toolTipChanged() = 0;
};

std::unique_ptr<StatusItemPresenter> makeStatusItemPresenter(StatusItemNative& item);

// Power

/// Connects to whatever keeps the session from idling, without waiting: a click then only has to ask.
void preparePower();

/// Keeps the session from idling, by `name` as the reason. On success (0) writes an identifier other than 0 to `id`;
/// otherwise, when nothing that restrains this session grants it, leaves `id` alone.
IOReturn createPowerAssertion(const std::string& type, IOPMAssertionLevel level, const std::string& name,
                              IOPMAssertionID* id);
/// Ends an assertion; an error for an identifier that names none.
IOReturn releasePowerAssertion(IOPMAssertionID id);

// Appearance

/// Applies the color scheme that the session says the user prefers, now and at each change, as long as the result
/// lives. Null where no session says anything.
std::unique_ptr<QObject> followColorScheme();

/// Lets screen readers know of the windows, as soon as the session can tell them.
void meetScreenReaders();

} // namespace Linux
