#pragma once

namespace Seam {

/// Gives this process mounts of its own: from now on it may mount what it likes, and nobody else sees it. Says whether
/// that worked; root may always, others while they have one thread and where the system lets users have namespaces.
bool ownMounts();

} // namespace Seam
