#include "AppDelegate.h"

int main() {
    auto& application = NS::Application::sharedApplication();
    application.setActivationPolicy(NS::ApplicationActivationPolicy::Accessory);
    // Never destroyed: the process ends in exit(), where a worker may still be inside the updater.
    static const auto& delegate = *new std::shared_ptr<AppDelegate>(std::make_shared<AppDelegate>());
    application.setDelegate(delegate);
    application.run();
    return 0;
}
