#include "Tools.h"

#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <sched.h>
#include <sstream>
#include <string>
#include <sys/mount.h>
#include <unistd.h>

namespace Tools {

namespace {

namespace fs = std::filesystem;

bool write(const char* file, const std::string& text) {
    std::ofstream stream(file);
    stream << text << std::flush;
    return stream.good();
}

// Mounting takes root's rights; a namespace of users gives them to everybody, over this process only.
bool unshareMounts() {
    if (geteuid() == 0) {
        return unshare(CLONE_NEWNS) == 0;
    }
    const auto user = std::to_string(geteuid());
    const auto group = std::to_string(getegid());
    return unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 && write("/proc/self/setgroups", "deny") &&
           write("/proc/self/uid_map", "0 " + user + " 1") && write("/proc/self/gid_map", "0 " + group + " 1");
}

fs::path record() {
    return std::getenv("TOOLS_RECORD");
}

} // namespace

bool isolate(const fs::path& scratch) {
    fs::create_directories(scratch);
    // In memory, for in a container the folder may be on an overlay itself, where another cannot put its own.
    if (!unshareMounts() || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        mount("tmpfs", scratch.c_str(), "tmpfs", 0, "mode=700") != 0) {
        return false;
    }
    fs::create_directory(scratch / "upper");
    fs::create_directory(scratch / "work");
    setenv("TOOLS_RECORD", (scratch / "runs").c_str(), 1);
    const auto options =
        "lowerdir=/usr/bin,upperdir=" + (scratch / "upper").string() + ",workdir=" + (scratch / "work").string();
    return mount("overlay", "/usr/bin", "overlay", 0, options.c_str()) == 0;
}

void install(const std::string& name, const std::string& script) {
    const auto file = fs::path("/usr/bin") / name;
    fs::remove(file); // it may be a link to another tool
    std::ofstream(file) << "#!/bin/bash\n{ printf '%s\\0' " << name << " \"$@\"; printf '\\n'; } >> \"$TOOLS_RECORD\"\n"
                        << script << "\n";
    fs::permissions(file, fs::perms(0755));
}

void remove(const std::string& name) {
    fs::remove(fs::path("/usr/bin") / name);
}

std::vector<Run> runs() {
    std::ifstream file(record());
    std::vector<Run> all;
    for (std::string line; std::getline(file, line);) {
        Run run;
        std::istringstream words(line);
        for (std::string word; std::getline(words, word, '\0');) {
            run.push_back(word);
        }
        all.push_back(run);
    }
    return all;
}

} // namespace Tools
