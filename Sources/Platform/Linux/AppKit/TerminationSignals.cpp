#include "Platform/Linux/AppKit/TerminationSignals.h"

#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace Linux {

namespace {

volatile std::sig_atomic_t writeEnd = -1;

void wake(int) {
    const int saved = errno;
    const char byte = 0;
    [[maybe_unused]] const auto written = write(writeEnd, &byte, 1);
    errno = saved;
}

} // namespace

TerminationSignals::TerminationSignals(std::function<void()> handler)
    : pipe_(O_CLOEXEC | O_NONBLOCK), notifier_(pipe_.readEnd.number(), QSocketNotifier::Read) {
    if (!pipe_.readEnd) {
        qFatal("no pipe for signals");
    }
    QObject::connect(&notifier_, &QSocketNotifier::activated, &notifier_, [this, handler = std::move(handler)] {
        char bytes[16];
        while (read(pipe_.readEnd.number(), bytes, sizeof bytes) > 0) {
        }
        handler();
    });
    writeEnd = pipe_.writeEnd.number();
    for (const int signal : signals) {
        std::signal(signal, wake);
    }
}

TerminationSignals::~TerminationSignals() {
    for (const int signal : signals) {
        std::signal(signal, SIG_DFL);
    }
}

} // namespace Linux
