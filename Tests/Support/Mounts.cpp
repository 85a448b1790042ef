#include "Mounts.h"

#include <fstream>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <unistd.h>

namespace Seam {

namespace {

bool write(const char* file, const std::string& text) {
    std::ofstream stream(file);
    stream << text << std::flush;
    return stream.good();
}

bool unshareMounts() {
    if (geteuid() == 0) {
        return unshare(CLONE_NEWNS) == 0;
    }
    const auto user = std::to_string(geteuid());
    const auto group = std::to_string(getegid());
    return unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 && write("/proc/self/setgroups", "deny") &&
           write("/proc/self/uid_map", "0 " + user + " 1") && write("/proc/self/gid_map", "0 " + group + " 1");
}

} // namespace

bool ownMounts() {
    return unshareMounts() && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

} // namespace Seam
