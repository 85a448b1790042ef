#include "Tools.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

/// The test program inside an application, in a folder with a space in its name. The test writes its Info.plist.
fs::path makeBundle(const fs::path& home) {
    const auto contents = home / "My Applications/Vantorel.app/Contents";
    fs::create_directories(contents / "MacOS");
    const auto executable = contents / "MacOS/Vantorel";
    const auto self = fs::read_symlink("/proc/self/exe");
    fs::copy_file(self, executable);
    fs::copy_file(self.parent_path() / "Transfer", executable.parent_path() / "Transfer");
    return executable;
}

void prepareAccount(const fs::path& home) {
    for (const char* folder : {"config", "cache", "temporary files"}) {
        fs::create_directory(home / folder);
        fs::permissions(home / folder, fs::perms::owner_all);
    }
    setenv("HOME", home.c_str(), 1);
    setenv("XDG_CONFIG_HOME", (home / "config").c_str(), 1);
    setenv("XDG_CACHE_HOME", (home / "cache").c_str(), 1);
    setenv("TMPDIR", (home / "temporary files").c_str(), 1);
    setenv("XDG_RUNTIME_DIR", home.c_str(), 1);
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    setenv("LC_ALL", "C.UTF-8", 1);
    setenv("KORVEX_UPDATE_BASE", "http://127.0.0.1:1", 1);
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
}

[[noreturn]] void becomeProgramInBundle(const fs::path& home, char** argv) {
    if (!Tools::isolate(home / "tools")) {
        std::perror("no private /usr/bin for the tests");
        std::_Exit(EXIT_FAILURE);
    }
    prepareAccount(home);
    const auto executable = makeBundle(home);
    setenv("UPDATER_TESTS_HOME", home.c_str(), 1);
    execv(executable.c_str(), argv);
    std::_Exit(EXIT_FAILURE);
}

int runInBundle(char** argv) {
    std::string pattern = (fs::temp_directory_path() / "updater-tests-XXXXXX").string();
    const fs::path home = mkdtemp(pattern.data());
    const pid_t child = fork();
    if (child == 0) {
        becomeProgramInBundle(home, argv);
    }
    int status = EXIT_FAILURE;
    waitpid(child, &status, 0);
    std::error_code ignored; // a helper may still be about
    fs::remove_all(home, ignored);
    return WIFEXITED(status) ? WEXITSTATUS(status) : EXIT_FAILURE;
}

} // namespace

/// The tests run in an application bundle of their own, with a user and with system tools of their own.
int main(int argc, char** argv) {
    const bool listsTests = std::ranges::find(argv, argv + argc, std::string("--gtest_list_tests")) != argv + argc;
    if (!listsTests && !std::getenv("UPDATER_TESTS_HOME")) {
        return runInBundle(argv);
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
