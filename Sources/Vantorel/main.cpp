#include "AppDelegate.h"

namespace {

// The application does not keep its delegate alive: these do, for the life of the process.
NS::Application application;
std::shared_ptr<AppDelegate> delegate;

} // namespace

int main() {
    application = NS::Application::sharedApplication();
    application.setActivationPolicy(NS::ApplicationActivationPolicy::Accessory);
    delegate = std::make_shared<AppDelegate>();
    application.setDelegate(delegate);
    application.run();
    return 0;
}
