#include "Platform/Dispatch/DispatchQueue.h"

#include "Platform/Foundation/Log.h"
#include "Platform/Linux/Dispatch/DispatchQueueNative.h"
#include "Platform/Linux/Native.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace NS {

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
        count(1);
        try {
            std::thread([this, block = std::move(block)]() mutable {
                block();
                block = nullptr; // what it keeps alive ends here, before anyone hears that the work is done
                count(-1);
            }).detach();
        } catch (const std::system_error& error) {
            count(-1);
            Log(std::string("no thread for background work: ") + error.what());
        }
    }

    bool waitUntilIdle(std::chrono::milliseconds patience) {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, patience, [this] { return running == 0; });
    }

private:
    void count(int change) {
        const std::lock_guard guard(mutex);
        running += change;
        changed.notify_all();
    }

    std::mutex mutex;
    std::condition_variable changed;
    int running = 0;
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

DispatchQueue DispatchQueue::mainQueue() {
    return Bridge::handle<DispatchQueue>(mainQueueNative());
}

DispatchQueue DispatchQueue::globalQueue() {
    return Bridge::handle<DispatchQueue>(globalQueueNative());
}

void DispatchQueue::async(std::function<void()> block) const {
    Bridge::native<DispatchQueueNative>(*this).async(std::move(block));
}

void DispatchQueue::asyncAfter(double seconds, std::function<void()> block) const {
    callAfter(seconds, [queue = *this, block = std::move(block)] { queue.async(block); });
}

} // namespace NS
