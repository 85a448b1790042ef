#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// The system's tools as the tests have them: in this process and its children, /usr/bin holds what `install` puts
/// there. The machine's own /usr/bin is not touched.
namespace Tools {

/// Gives this process an own view of /usr/bin, before it has any thread. Says whether that worked; `scratch` is an
/// empty folder that outlives the process.
bool isolate(const std::filesystem::path& scratch);

/// Puts a tool at /usr/bin/`name`: a Bash script, after whose start its arguments are on record.
void install(const std::string& name, const std::string& script);
void remove(const std::string& name);

/// Each run of such a tool so far: its name and then its arguments.
using Run = std::vector<std::string>;
std::vector<Run> runs();

} // namespace Tools
