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

std::array<int, 2> makePipe() {
    std::array<int, 2> ends = {-1, -1};
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        qFatal("no pipe for signals");
    }
    return ends;
}

} // namespace

TerminationSignals::TerminationSignals(std::function<void()> handler)
    : pipe_(makePipe()), notifier_(pipe_[0], QSocketNotifier::Read) {
    QObject::connect(&notifier_, &QSocketNotifier::activated, &notifier_, [this, handler = std::move(handler)] {
        char bytes[16];
        while (read(pipe_[0], bytes, sizeof bytes) > 0) {
        }
        handler();
    });
    writeEnd = pipe_[1];
    for (const int signal : signals) {
        std::signal(signal, wake);
    }
}

TerminationSignals::~TerminationSignals() {
    for (const int signal : signals) {
        std::signal(signal, SIG_DFL);
    }
    notifier_.setEnabled(false);
    close(pipe_[0]);
    close(pipe_[1]);
}

} // namespace Linux
