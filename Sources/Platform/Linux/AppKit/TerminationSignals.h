#pragma once

#include "Platform/Linux/Foundation/Files.h"

#include <QSocketNotifier>
#include <array>
#include <csignal>
#include <functional>

namespace Linux {

/// Brings SIGTERM, SIGINT and SIGHUP to the event loop, for the life of this object (one at a time). By a handler and a
/// pipe rather than signalfd, which needs the signals blocked in every thread: Qt's have started by then.
class TerminationSignals {
public:
    explicit TerminationSignals(std::function<void()> handler);
    ~TerminationSignals();
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;

private:
    static constexpr std::array signals = {SIGTERM, SIGINT, SIGHUP};

    const Pipe pipe_;
    QSocketNotifier notifier_;
};

} // namespace Linux
