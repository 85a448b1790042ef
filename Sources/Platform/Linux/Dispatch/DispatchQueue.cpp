#include "Platform/Dispatch/DispatchQueue.h"

#include "Platform/Foundation/Log.h"
#include "Platform/Linux/Dispatch/Workers.h"
#include "Platform/Linux/Native.h"
#include "Platform/Linux/Seam.h"
#include "Platform/NoDestructor.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <condition_variable>
#include <list>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace Linux {

namespace {

struct DispatchQueueNative : Native {
    virtual void async(std::function<void()> block) = 0;
};

struct MainQueue : DispatchQueueNative {
    void async(std::function<void()> block) override {
        QMetaObject::invokeMethod(QCoreApplication::instance(), std::move(block), Qt::QueuedConnection);
    }
};

/// A thread for each block: there are few, and none is left behind. Not QThreadPool (Qt 6.4): when the system has no
/// thread for it, it loses the block and never becomes idle again; and ThreadSanitizer takes each hand-over for a race.
struct GlobalQueue : DispatchQueueNative {
    void async(std::function<void()> block) override {
        const std::lock_guard guard(mutex);
        joinEnded();
        const auto place = running.emplace(running.end());
        try {
            *place = std::thread([this, place, block = std::move(block)]() mutable {
                block();
                block = nullptr; // destroys its captures before the queue counts as idle
                end(place);
            });
        } catch (const std::system_error& error) {
            running.erase(place);
            Log(std::string("no thread for background work: ") + error.what());
        }
    }

    bool waitUntilIdle(std::chrono::milliseconds timeout) {
        std::unique_lock lock(mutex);
        const bool isIdle = changed.wait_for(lock, timeout, [this] { return running.empty(); });
        joinEnded();
        return isIdle;
    }

private:
    using Threads = std::list<std::thread>;

    void end(Threads::iterator place) {
        const std::lock_guard guard(mutex);
        ended.splice(ended.end(), running, place);
        changed.notify_all();
    }

    // A thread whose block has run still has to destroy its thread-local variables.
    void joinEnded() {
        for (auto& thread : ended) {
            thread.join();
        }
        ended.clear();
    }

    std::mutex mutex;
    std::condition_variable changed;
    Threads running;
    Threads ended;
};

template <class Queue>
std::shared_ptr<Queue> sharedQueue() {
    static NoDestructor<std::shared_ptr<Queue>> queue(std::make_shared<Queue>());
    return *queue;
}

} // namespace

bool waitForWorkers(std::chrono::milliseconds timeout) {
    return sharedQueue<GlobalQueue>()->waitUntilIdle(timeout);
}

} // namespace Linux

namespace NS {

using namespace Linux;

DispatchQueue DispatchQueue::main() {
    return handle<DispatchQueue>(sharedQueue<MainQueue>());
}

DispatchQueue DispatchQueue::global() {
    return handle<DispatchQueue>(sharedQueue<GlobalQueue>());
}

void DispatchQueue::async(std::function<void()> block) const {
    object<DispatchQueueNative>(*this).async(std::move(block));
}

void DispatchQueue::asyncAfter(double seconds, std::function<void()> block) const {
    callAfter(seconds, [queue = *this, block = std::move(block)] { queue.async(block); });
}

} // namespace NS
