#include "Platform/Foundation/Task.h"

#include "Platform/macOS/Conversions.h"

namespace NS {

using namespace macOS;

Task Task::init() {
    return handle<Task>([[NSTask alloc] init]);
}

void Task::setExecutableURL(const URL& url) {
    [object<NSTask>(*this) setExecutableURL:object<NSURL>(url)];
}

void Task::setArguments(const std::vector<std::string>& arguments) {
    [object<NSTask>(*this) setArguments:toNSArray(arguments)];
}

void Task::setStandardOutput(const FileHandle& handle) {
    [object<NSTask>(*this) setStandardOutput:object<NSFileHandle>(handle)];
}

void Task::setStandardError(const FileHandle& handle) {
    [object<NSTask>(*this) setStandardError:object<NSFileHandle>(handle)];
}

bool Task::launchAndReturnError() {
    return [object<NSTask>(*this) launchAndReturnError:nil];
}

void Task::waitUntilExit() {
    [object<NSTask>(*this) waitUntilExit];
}

int Task::terminationStatus() const {
    return [object<NSTask>(*this) terminationStatus];
}

} // namespace NS
