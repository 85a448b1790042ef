#pragma once

#include "Platform/Linux/Foundation/Files.h"

#include <QSocketNotifier>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace Linux {

/// Sees to it that an account runs one copy of the program, which hears of every further start: by a lock that the
/// kernel takes back however the process ends, and a socket beside it. Neither needs a bus. Where no lock can be had,
/// this copy runs; two are better than none.
class OneCopy {
public:
    /// Tells the other copy, where one runs. Calls `startedAgain` on each further start, from the event loop.
    OneCopy(const std::string& identifier, std::function<void()> startedAgain);
    ~OneCopy() { stopListening(); }
    OneCopy(const OneCopy&) = delete;
    OneCopy& operator=(const OneCopy&) = delete;

    bool isFirst() const { return isFirst_; }

    /// Further starts wait from now on, for this process to end.
    void stopListening();

private:
    bool lock(const std::filesystem::path& file);
    bool tellOther() const;
    void listen();

    const std::filesystem::path socketPath_;
    const std::function<void()> startedAgain_;
    bool isFirst_ = true;
    Descriptor lock_;
    Descriptor socket_;
    std::unique_ptr<QSocketNotifier> notifier_;
};

} // namespace Linux
