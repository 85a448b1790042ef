#pragma once

#include <cstdint>
#include <string>

namespace NS {

/// IOKit's power-management calls, under their own names. Main thread only. Whatever a process holds is dropped
/// by the system when the process ends, however it ends.
using IOReturn = int; // 0 is success
using IOPMAssertionID = std::uint32_t;
enum class IOPMAssertionLevel : std::uint32_t { Off = 0, On = 255 };

/// Takes an assertion of `type`; `name` is the reason that the system shows. On success (0) writes the new
/// identifier to `id`, which is never 0; otherwise leaves it alone.
IOReturn IOPMAssertionCreateWithName(const std::string& type, IOPMAssertionLevel level, const std::string& name,
                                     IOPMAssertionID* id);
IOReturn IOPMAssertionRelease(IOPMAssertionID id);

} // namespace NS
