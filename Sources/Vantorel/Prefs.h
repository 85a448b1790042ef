#pragma once

#include "Platform/Foundation/UserDefaults.h"

#include <cstdint>
#include <string>

/// The preferences: the user's defaults store under flat keys, and the count of update attempts.
/// Safe from any thread.
namespace Prefs {

inline constexpr char appLanguage[] = "appLanguage"; // its presence also says that the first run is completed
inline constexpr char launchAtLogin[] = "launchAtLogin";
inline constexpr char autoUpdate[] = "autoUpdate";
inline constexpr char scheduleEnabled[] = "scheduleEnabled";
inline constexpr char scheduleOnMinutes[] = "scheduleOnMinutes"; // minutes after local midnight
inline constexpr char scheduleOffMinutes[] = "scheduleOffMinutes";
inline constexpr char updateAttemptsByVersion[] = "updateAttempts"; // version to count, one entry at most

/// The shared store.
NS::UserDefaults& d();

/// What the keys read as until the user decides. Call before any preference is read.
void registerDefaults();

/// How many attempts to install `version` are on record; 0 for anything malformed.
std::int64_t updateAttempts(const std::string& version);

/// Records one more attempt to install `version`, and forgets those of every other version.
void noteUpdateAttempt(const std::string& version);

} // namespace Prefs
