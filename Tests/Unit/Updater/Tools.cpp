#include "Tools.h"

#include "Support/Mounts.h"

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/mount.h>

namespace Tools {

namespace {

namespace fs = std::filesystem;

fs::path record() {
    return std::getenv("TOOLS_RECORD");
}

} // namespace

bool isolate(const fs::path& scratch) {
    fs::create_directories(scratch);
    // In memory, for in a container the folder may be on an overlay itself, where another cannot put its own.
    if (!Seam::ownMounts() || mount("tmpfs", scratch.c_str(), "tmpfs", 0, "mode=700") != 0) {
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
