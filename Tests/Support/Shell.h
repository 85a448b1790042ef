#pragma once

#include "Platform/Foundation/Task.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

/// A task that runs `script` in the shell; its `arguments` are $0, $1 and so on.
inline NS::Task shell(const std::string& script, const std::vector<std::string>& arguments = {}) {
    auto task = NS::Task::init();
    task.setExecutableURL(NS::URL::fileURLWithPath("/bin/sh"));
    std::vector<std::string> words = {"-c", script};
    words.insert(words.end(), arguments.begin(), arguments.end());
    task.setArguments(words);
    return task;
}

/// The exit status of `task`, which is run to its end.
inline int statusOf(NS::Task task) {
    EXPECT_TRUE(task.launchAndReturnError());
    task.waitUntilExit();
    return task.terminationStatus();
}
