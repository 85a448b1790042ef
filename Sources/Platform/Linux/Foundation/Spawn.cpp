#include "Platform/Linux/Foundation/Spawn.h"

#include "Platform/Linux/Foundation/Files.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <list>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Linux {

namespace {

class Settings {
public:
    explicit Settings(const std::vector<int>& descriptors) {
        posix_spawn_file_actions_init(&files);
        posix_spawnattr_init(&attributes);
        giveSignals();
        giveDescriptors(descriptors);
    }
    ~Settings() {
        posix_spawn_file_actions_destroy(&files);
        posix_spawnattr_destroy(&attributes);
    }
    Settings(const Settings&) = delete;
    Settings& operator=(const Settings&) = delete;

    posix_spawn_file_actions_t files;
    posix_spawnattr_t attributes;

private:
    void giveSignals() {
        sigset_t none;
        sigset_t all;
        sigemptyset(&none);
        sigfillset(&all);
        posix_spawnattr_setsigmask(&attributes, &none);
        posix_spawnattr_setsigdefault(&attributes, &all);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }

    void giveDescriptors(const std::vector<int>& descriptors) {
        const int count = static_cast<int>(descriptors.size());
        for (int target = 0; target < count; ++target) {
            if (const int source = descriptors[static_cast<std::size_t>(target)]; source >= 0) {
                // Out of the way first, or one might be another's target.
                aside_.emplace_back(fcntl(source, F_DUPFD_CLOEXEC, count));
                posix_spawn_file_actions_adddup2(&files, aside_.back().number(), target);
            }
        }
        posix_spawn_file_actions_addclosefrom_np(&files, count);
    }

    std::list<Descriptor> aside_;
};

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (auto& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

} // namespace

std::optional<pid_t> spawn(const std::string& executable, const std::vector<std::string>& arguments,
                           const std::vector<int>& descriptors) {
    const Settings settings(descriptors);
    std::vector<std::string> words = arguments;
    words.insert(words.begin(), executable);
    pid_t child = 0;
    const int error = posix_spawn(&child, executable.c_str(), &settings.files, &settings.attributes,
                                  pointersTo(words).data(), environ);
    return error == 0 ? std::optional(child) : std::nullopt;
}

int waitFor(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

} // namespace Linux
