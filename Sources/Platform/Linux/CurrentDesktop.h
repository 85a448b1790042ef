#pragma once

#include <QByteArray>
#include <QByteArrayList>

namespace Linux {

/// Whether the session is one of this desktop, as `XDG_CURRENT_DESKTOP` has it.
/// https://specifications.freedesktop.org/desktop-entry-spec/latest/recognized-keys.html
inline bool isCurrentDesktop(const char* name) {
    return qgetenv("XDG_CURRENT_DESKTOP").split(':').contains(name);
}

} // namespace Linux
