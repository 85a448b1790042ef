#include "Platform/AppKit/Application.h"

#include "Platform/Foundation/Bundle.h"
#include "Platform/Foundation/UserDefaults.h"
#include "Platform/Linux/AppKit/CurrentEvent.h"
#include "Platform/Linux/AppKit/DisplayServer.h"
#include "Platform/Linux/AppKit/OneCopy.h"
#include "Platform/Linux/AppKit/Palette.h"
#include "Platform/Linux/AppKit/TerminationSignals.h"
#include "Platform/Linux/AppKit/WindowNative.h"
#include "Platform/Linux/Dispatch/Workers.h"
#include "Platform/Linux/Foundation/TemporaryFiles.h"
#include "Platform/Linux/Foundation/Transfers.h"
#include "Platform/Linux/Native.h"
#include "Platform/Linux/Seam.h"

#include <QApplication>
#include <QSessionManager>
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <utility>

namespace Linux {

namespace {

constexpr auto workersPatience = std::chrono::milliseconds(1500);

std::optional<Event> currentEventOfApplication;

QApplication* makeApplication() {
    chooseDisplayServer();
    static int argc = 1;
    static char* argv[] = {program_invocation_short_name, nullptr}; // which also names the windows' class
    auto* application = new QApplication(argc, argv);
    application->setQuitOnLastWindowClosed(false);
    const auto bundle = Bundle::mainBundle();
    if (const auto title = bundle.objectForInfoDictionaryKey("CFBundleName"); title && title->string()) {
        application->setApplicationName(QString::fromStdString(*title->string()));
    }
    application->setDesktopFileName(QString::fromStdString(bundle.bundleIdentifier().value_or("")));
    // The login item decides whether we start with the session, not the session manager's memory of the last one.
    QObject::connect(application, &QGuiApplication::saveStateRequest,
                     [](QSessionManager& session) { session.setRestartHint(QSessionManager::RestartNever); });
    return application;
}

struct ApplicationNative : Native {
    // Never destroyed: handles that live as long as the process still need it.
    QApplication* const application = makeApplication();
    ApplicationActivationPolicy policy = ApplicationActivationPolicy::Regular;
    std::weak_ptr<ApplicationDelegate> delegate;
};

} // namespace

template <>
struct NativeOf<Application> : std::type_identity<ApplicationNative> {};

CurrentEvent::CurrentEvent(const Event& event) : outer_(std::exchange(currentEventOfApplication, event)) {}

CurrentEvent::~CurrentEvent() {
    currentEventOfApplication = outer_;
}

} // namespace Linux

namespace NS {

using namespace Linux;

Application& Application::sharedApplication() {
    static Application application = handle<Application>(std::make_shared<ApplicationNative>());
    return application;
}

bool Application::setActivationPolicy(ApplicationActivationPolicy policy) {
    native(*this).policy = policy; // without a window of its own an application has no place in the task bar anyway
    return true;
}

ApplicationActivationPolicy Application::activationPolicy() const {
    return native(*this).policy;
}

void Application::setDelegate(const std::shared_ptr<ApplicationDelegate>& delegate) {
    native(*this).delegate = delegate;
}

void Application::run() {
    auto& self = native(*this);
    OneCopy copy(Bundle::mainBundle().bundleIdentifier().value_or(""), [this, &self] {
        const bool anyVisible = std::ranges::any_of(windows(), [](const Window& window) { return window.isVisible(); });
        if (const auto delegate = self.delegate.lock()) {
            delegate->applicationShouldHandleReopen(anyVisible);
        }
    });
    if (!copy.isFirst()) {
        return;
    }
    const TerminationSignals signals([this] { terminate(); });
    const auto following = followColorScheme();
    preparePower();
    meetScreenReaders();
    TemporaryFiles::removeOld();
    QMetaObject::invokeMethod(
        self.application,
        [&self] {
            if (const auto delegate = self.delegate.lock()) {
                delegate->applicationDidFinishLaunching({"NSApplicationDidFinishLaunchingNotification"});
            }
        },
        Qt::QueuedConnection);
    QCoreApplication::exec();
    copy.stopListening();
    if (const auto delegate = self.delegate.lock()) {
        delegate->applicationWillTerminate({"NSApplicationWillTerminateNotification"});
    }
    for (auto& window : windows()) { // now, that Qt has all it needs for it
        window.orderOut();
    }
    cancelTransfers();
    const bool workersEnded = waitForWorkers(workersPatience);
    UserDefaults::standardUserDefaults().synchronize();
    if (!workersEnded) {
        std::_Exit(EXIT_SUCCESS); // the statics that they use must not be destroyed under them
    }
}

// Not quit(), which a window that must not be closed would refuse.
void Application::terminate() {
    QCoreApplication::exit(EXIT_SUCCESS);
}

std::optional<Event> Application::currentEvent() const {
    return currentEventOfApplication;
}

std::vector<Window> Application::windows() const {
    std::vector<Window> windows;
    for (const auto& window : WindowNative::all()) {
        if (auto shared = window.lock()) {
            windows.push_back(handle<Window>(std::move(shared)));
        }
    }
    return windows;
}

void Application::activateIgnoringOtherApps(bool) {} // a desktop activates windows, one by one

} // namespace NS
