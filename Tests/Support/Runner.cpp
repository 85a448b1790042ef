#include "Runner.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

constexpr unsigned longestTest = 120; // seconds

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

struct Run {
    std::string test;
    File output;
};

/// For one child alone.
File newOutput() {
    File file(std::tmpfile(), std::fclose);
    fcntl(fileno(file.get()), F_SETFD, FD_CLOEXEC);
    return file;
}

std::string textOf(std::FILE* file) {
    std::rewind(file);
    std::string text;
    for (int c = 0; (c = std::fgetc(file)) != EOF;) {
        text += static_cast<char>(c);
    }
    return text;
}

/// A child that runs what the flags of GoogleTest say.
pid_t begin(std::FILE* output) {
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        dup2(fileno(output), STDOUT_FILENO);
        dup2(fileno(output), STDERR_FILENO);
        alarm(longestTest);
        std::exit(RUN_ALL_TESTS());
    }
    return child;
}

/// As GoogleTest lists them: "Suite." at the beginning of a line, its tests indented below, remarks after two blanks.
std::vector<std::string> testsIn(const std::string& list) {
    std::vector<std::string> tests;
    std::string suite;
    std::istringstream lines(list);
    for (std::string line; std::getline(lines, line);) {
        const bool isTest = line.starts_with("  ");
        const std::string name = line.substr(isTest ? 2 : 0, line.find("  #") - (isTest ? 2 : 0));
        if (isTest) {
            tests.push_back(suite + name);
        } else {
            suite = name;
        }
    }
    return tests;
}

std::vector<std::string> chosenTests() {
    const File list = newOutput();
    GTEST_FLAG_SET(list_tests, true);
    waitpid(begin(list.get()), nullptr, 0);
    GTEST_FLAG_SET(list_tests, false);
    return testsIn(textOf(list.get()));
}

std::size_t jobs() {
    const char* wish = std::getenv("TEST_JOBS");
    return wish ? std::strtoul(wish, nullptr, 10) : std::thread::hardware_concurrency();
}

/// Waits for one of them. Whether it passed.
bool finishOne(std::map<pid_t, Run>& running) {
    int status = 0;
    const auto ended = running.extract(waitpid(-1, &status, 0));
    if (status == 0) {
        return true;
    }
    const auto& [test, output] = ended.mapped();
    std::printf("%s\nFAILED: %s (%s %d)\n", textOf(output.get()).c_str(), test.c_str(),
                WIFSIGNALED(status) ? "signal" : "status",
                WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status));
    return false;
}

int runEach(const std::vector<std::string>& tests) {
    std::map<pid_t, Run> running;
    std::size_t passed = 0;
    for (const auto& test : tests) {
        if (running.size() >= jobs()) {
            passed += finishOne(running);
        }
        GTEST_FLAG_SET(filter, test);
        File output = newOutput();
        const pid_t child = begin(output.get());
        running.emplace(child, Run{test, std::move(output)});
    }
    while (!running.empty()) {
        passed += finishOne(running);
    }
    std::printf("%zu of %zu tests passed\n", passed, tests.size());
    return passed == tests.size() && !tests.empty() ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int runEachTestInAProcess() {
    if (GTEST_FLAG_GET(list_tests) || !GTEST_FLAG_GET(internal_run_death_test).empty()) {
        return RUN_ALL_TESTS();
    }
    const auto tests = chosenTests();
    return tests.size() == 1 ? RUN_ALL_TESTS() : runEach(tests);
}
