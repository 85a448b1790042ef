#include "Platform/Foundation/Task.h"

#include "Platform/Linux/Foundation/FileHandleNative.h"
#include "Platform/Linux/Foundation/Spawn.h"
#include "Platform/Linux/Native.h"
#include "Platform/NoDestructor.h"

#include <memory>
#include <mutex>
#include <sys/wait.h>

namespace Linux {

namespace {

/// Children that nobody waits for. Each launch collects those that have ended meanwhile.
class Orphans {
public:
    void add(pid_t child) {
        const std::lock_guard guard(mutex_);
        children_.push_back(child);
    }

    void collect() {
        const std::lock_guard guard(mutex_);
        std::erase_if(children_, [](pid_t child) { return waitpid(child, nullptr, WNOHANG) != 0; });
    }

private:
    std::mutex mutex_;
    std::vector<pid_t> children_;
};

Orphans& orphans() {
    static NoDestructor<Orphans> all;
    return *all;
}

struct TaskNative : Native {
    ~TaskNative() override {
        if (child > 0) {
            orphans().add(child);
        }
    }

    std::string executable;
    std::vector<std::string> arguments;
    FileHandle output;
    FileHandle error;
    pid_t child = 0; // 0 before it is launched, and once it has been waited for
    int status = 0;
};

int descriptorOf(const FileHandle& handle) {
    return handle ? native(handle).descriptor.number() : -1;
}

} // namespace

template <>
struct NativeOf<Task> : std::type_identity<TaskNative> {};

} // namespace Linux

namespace NS {

using namespace Linux;

Task Task::init() {
    return handle<Task>(std::make_shared<TaskNative>());
}

void Task::setExecutableURL(const URL& url) {
    native(*this).executable = url.path();
}

void Task::setArguments(const std::vector<std::string>& arguments) {
    native(*this).arguments = arguments;
}

void Task::setStandardOutput(const FileHandle& handle) {
    native(*this).output = handle;
}

void Task::setStandardError(const FileHandle& handle) {
    native(*this).error = handle;
}

bool Task::launchAndReturnError() {
    auto& self = native(*this);
    orphans().collect();
    const auto child =
        spawn(self.executable, self.arguments, {-1, descriptorOf(self.output), descriptorOf(self.error)});
    self.child = child.value_or(0);
    return child.has_value();
}

void Task::waitUntilExit() {
    auto& self = native(*this);
    self.status = waitFor(self.child);
    self.child = 0;
}

int Task::terminationStatus() const {
    const int status = native(*this).status;
    return WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status);
}

} // namespace NS
