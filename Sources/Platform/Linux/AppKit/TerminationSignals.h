#pragma once

#include <QSocketNotifier>
#include <array>
#include <csignal>
#include <functional>

namespace Linux {

/// Brings SIGTERM, SIGINT and SIGHUP to the event loop, for the life of this object (one at a time).
class TerminationSignals {
public:
    explicit TerminationSignals(std::function<void()> handler);
    ~TerminationSignals();
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;

private:
    static constexpr std::array signals = {SIGTERM, SIGINT, SIGHUP};

    std::array<int, 2> pipe_;
    QSocketNotifier notifier_;
};

} // namespace Linux
