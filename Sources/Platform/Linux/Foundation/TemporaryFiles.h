#pragma once

namespace Linux::TemporaryFiles {

inline constexpr char downloadPrefix[] = "download-";

/// Removes what updates of more than a day ago left in the folder that takes the place of a temporary directory.
/// Systems age those out; nobody else does so here.
void removeOld();

} // namespace Linux::TemporaryFiles
