#pragma once

/// Launch at login. The truth is the system's; nothing is kept here.
namespace LoginItem {

/// Makes the application a login item, or stops it being one, and says whether the system agreed. A refusal goes to the
/// log. Main thread only.
bool set(bool enabled);

/// Does what an administrator decided, if one did, unless it is so already. Main thread only.
void applyForced();

} // namespace LoginItem
