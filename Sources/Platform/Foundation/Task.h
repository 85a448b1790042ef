#pragma once

#include "Platform/Foundation/FileHandle.h"
#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/URL.h"

#include <string>
#include <vector>

namespace NS {

/// Another program, run as a child process (NSTask). The child outlives this one's end and the handle's. Each task runs
/// once. Safe from any thread, from one at a time.
class Task : public Object {
public:
    /// One that has yet to be launched, with this process's own input, output and error.
    static Task init();

    void setExecutableURL(const URL& url);
    /// Without the program's own name, which is the executable's path.
    void setArguments(const std::vector<std::string>& arguments);
    void setStandardOutput(const FileHandle& handle);
    void setStandardError(const FileHandle& handle);

    /// Whether it was started.
    bool launchAndReturnError();
    /// Blocks. Not on the main thread, and only after a successful launch.
    void waitUntilExit();
    /// The exit status, or the number of the signal that ended the process. Only when it has ended.
    int terminationStatus() const;

    using Object::Object;
};

} // namespace NS
