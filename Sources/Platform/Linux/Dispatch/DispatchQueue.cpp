#include "Platform/Dispatch/DispatchQueue.h"

#include "Platform/Foundation/Log.h"
#include "Platform/Linux/Dispatch/Workers.h"
#include "Platform/Linux/Native.h"
#include "Platform/Linux/Seam.h"

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

/// A thread for each block: there are few, and none is left behind.
struct GlobalQueue : DispatchQueueNative {
    void async(std::function<void()> block) override {
        const std::lock_guard guard(mutex);
        joinEnded();
        const auto place = running.emplace(running.end());
        try {
            *place = std::thread([this, place, block = std::move(block)]() mutable {
                block();
                block = nullptr; // what it keeps alive ends here, before anyone hears that the work is done
                end(place);
            });
        } catch (const std::system_error& error) {
            running.erase(place);
            Log(std::string("no thread for background work: ") + error.what());
        }
    }

    bool waitUntilIdle(std::chrono::milliseconds patience) {
        std::unique_lock lock(mutex);
        const bool isIdle = changed.wait_for(lock, patience, [this] { return running.empty(); });
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

    // A thread whose work is done still has to put away what libraries keep for each thread.
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

// Neither queue is ever destroyed: workers may outlast the statics.
std::shared_ptr<MainQueue> mainQueueNative() {
    static const auto& queue = *new std::shared_ptr(std::make_shared<MainQueue>());
    return queue;
}

std::shared_ptr<GlobalQueue> globalQueueNative() {
    static const auto& queue = *new std::shared_ptr(std::make_shared<GlobalQueue>());
    return queue;
}

} // namespace

bool waitForWorkers(std::chrono::milliseconds patience) {
    return globalQueueNative()->waitUntilIdle(patience);
}

} // namespace Linux

namespace NS {

using namespace Linux;

DispatchQueue DispatchQueue::main() {
    return handle<DispatchQueue>(mainQueueNative());
}

DispatchQueue DispatchQueue::global() {
    return handle<DispatchQueue>(globalQueueNative());
}

void DispatchQueue::async(std::function<void()> block) const {
    object<DispatchQueueNative>(*this).async(std::move(block));
}

void DispatchQueue::asyncAfter(double seconds, std::function<void()> block) const {
    callAfter(seconds, [queue = *this, block = std::move(block)] { queue.async(block); });
}

} // namespace NS
