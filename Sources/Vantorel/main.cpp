#include "AppDelegate.h"
#include "Platform/NoDestructor.h"

int main() {
    auto& application = NS::Application::sharedApplication();
    application.setActivationPolicy(NS::ApplicationActivationPolicy::Accessory);
    // The process ends in exit(), where a worker may still be inside the updater.
    static NoDestructor<std::shared_ptr<AppDelegate>> delegate(std::make_shared<AppDelegate>());
    application.setDelegate(*delegate);
    application.run();
    return 0;
}
