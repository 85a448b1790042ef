// Checks for updates again and again, as the daily timer would: RepeatChecks <number of checks>
// After each tenth it prints a line and waits for one, so that it can be looked at meanwhile.

#include "Platform/AppKit/Application.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Prefs.h"
#include "Updater.h"

#include <cstdio>
#include <cstdlib>
#include <future>

namespace {

bool check() {
    std::promise<bool> installed;
    NS::DispatchQueue::global().async(
        [&installed] { installed.set_value(Updater::checkAndInstall(/*userInitiated=*/false)); });
    return installed.get_future().get();
}

} // namespace

int main(int argc, char** argv) {
    const int checks = argc == 2 ? std::atoi(argv[1]) : 0;
    if (checks < 10) {
        std::fputs("usage: RepeatChecks <number of checks>\n", stderr);
        return 2;
    }
    NS::Application::sharedApplication();
    Prefs::registerDefaults();
    for (int done = 1; done <= checks; ++done) {
        if (check()) {
            std::fputs("an update was installed\n", stderr);
            return 1;
        }
        if (done % (checks / 10) == 0) {
            std::printf("%d\n", done);
            std::fflush(stdout);
            std::getchar();
        }
    }
}
