#pragma once

#include "Platform/Linux/Logging.h"

#include <QString>
#include <functional>
#include <optional>
#include <poll.h>

namespace Linux {

/// One way to keep the session from idling. It lives as long as the process, with its connection open. Main thread
/// only.
class IdleInhibitor {
public:
    enum class State { Released, Asked, Granted, Refused };

    explicit IdleInhibitor(const char* name) : name_(name) {}
    IdleInhibitor(const IdleInhibitor&) = delete;
    IdleInhibitor& operator=(const IdleInhibitor&) = delete;

    /// Connects, so that nothing is left to do at a click but to ask.
    virtual void prepare() {}
    /// Asks without waiting; what comes back later changes the state.
    virtual void ask(const QString& application, const QString& reason) = 0;
    /// Gives back what was granted, now or when a late answer comes.
    virtual void release() = 0;

    /// What an answer comes by, while one is awaited.
    virtual std::optional<pollfd> awaited() const { return std::nullopt; }
    /// Handles what has come.
    virtual void process() {}

    bool isAsked() const { return state_ == State::Asked; }
    bool isGranted() const { return state_ == State::Granted; }

    /// Called after each change of the state.
    std::function<void()> changed;

protected:
    ~IdleInhibitor() = default;

    bool isWanted() const { return state_ != State::Released; }
    void setState(State state);

private:
    const char* const name_;
    State state_ = State::Released;
};

} // namespace Linux
