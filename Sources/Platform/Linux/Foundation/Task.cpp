#include "Platform/Foundation/Task.h"

#include "Platform/Linux/Foundation/Files.h"
#include "Platform/Linux/Native.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <mutex>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace NS {

namespace {

struct FileHandleNative : Native {
    explicit FileHandleNative(int number) : descriptor(number) {}

    const Descriptor descriptor;
};

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
    static auto& all = *new Orphans; // threads may outlast the statics
    return all;
}

/// How a child starts: with the files given to it, and with no signal blocked or ignored.
class SpawnSettings {
public:
    SpawnSettings() {
        posix_spawn_file_actions_init(&files);
        posix_spawnattr_init(&attributes);
        sigset_t none;
        sigset_t all;
        sigemptyset(&none);
        sigfillset(&all);
        posix_spawnattr_setsigmask(&attributes, &none);
        posix_spawnattr_setsigdefault(&attributes, &all);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~SpawnSettings() {
        posix_spawn_file_actions_destroy(&files);
        posix_spawnattr_destroy(&attributes);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;

    void redirect(int stream, const FileHandle& handle) {
        if (handle) {
            const int target = Bridge::native<FileHandleNative>(handle).descriptor.number();
            posix_spawn_file_actions_adddup2(&files, target, stream);
        }
    }

    posix_spawn_file_actions_t files;
    posix_spawnattr_t attributes;
};

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

TaskNative& native(const Task& task) {
    return Bridge::native<TaskNative>(task);
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (auto& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

} // namespace

FileHandle FileHandle::fileHandleWithNullDevice() {
    return Bridge::handle<FileHandle>(std::make_shared<FileHandleNative>(open("/dev/null", O_RDWR | O_CLOEXEC)));
}

Task Task::task() {
    return Bridge::handle<Task>(std::make_shared<TaskNative>());
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
    SpawnSettings settings;
    settings.redirect(STDOUT_FILENO, self.output);
    settings.redirect(STDERR_FILENO, self.error);
    posix_spawn_file_actions_addclosefrom_np(&settings.files, STDERR_FILENO + 1);
    std::vector<std::string> words = self.arguments;
    words.insert(words.begin(), self.executable);
    return posix_spawn(&self.child, self.executable.c_str(), &settings.files, &settings.attributes,
                       pointersTo(words).data(), environ) == 0;
}

void Task::waitUntilExit() {
    auto& self = native(*this);
    while (waitpid(self.child, &self.status, 0) < 0 && errno == EINTR) {
    }
    self.child = 0;
}

int Task::terminationStatus() const {
    const int status = native(*this).status;
    return WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status);
}

} // namespace NS
