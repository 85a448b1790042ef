#pragma once

#include "Platform/Foundation/Timer.h"
#include "Platform/Foundation/URL.h"
#include "Platform/NoDestructor.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Replaces the running application by a newer release of itself: it looks once a day, and trusts nothing it downloads.
/// Failures are silent but for two lines in the log; the next check tries again.
class Updater {
public:
    /// One offered update, as the server's manifest states it. Nothing of it is verified yet.
    struct Release {
        std::string version;
        std::string file;      // the disk image, relative to the base URL
        std::string sha256;    // of the disk image: hexadecimal, lower case
        std::int64_t size = 0; // of the disk image, in bytes; 0 when unknown, and trusted for nothing
        std::map<std::string, std::string> notes;
    };

    /// Asked on a worker thread before a newer release is installed: true puts it off until the next check. Set before
    /// `start` and not afterwards.
    static inline NoDestructor<std::function<bool()>> shouldPostpone;

    /// Checks a little later, and then daily. Main thread only.
    static void start();

    /// Looks for a newer release and installs it, at the user's request also while automatic updates are off. True when
    /// the application is about to quit for it. False at once while another check is under way. Blocks for as long as
    /// that takes: any thread but the main one.
    static bool checkAndInstall(bool userInitiated);

    /// The server: `KORVEX_UPDATE_BASE` of the environment, or else the built-in one. Safe from any thread.
    static NS::URL baseURL();

    /// What the server offers; nothing when it cannot be had or read. Blocks: any thread but the main one.
    static std::optional<Release> fetchLatest();

    /// Whether the version `candidate` is above `current`, number by number. Safe from any thread.
    static bool isNewer(const std::string& candidate, const std::string& current);

    /// The running application's version, "0" when it has none. Safe from any thread.
    static std::string currentVersion();

    /// The manifest's text as a release, if it describes one. Safe from any thread.
    static std::optional<Release> parseManifest(const std::string& text);

private:
    static bool isInstallable(const Release& release);
    static bool install(const Release& release);
    static NS::URL download(const Release& release);
    static NS::URL mountAndStage(const NS::URL& dmg, const Release& expecting);
    static NS::URL stage(const NS::URL& mountPoint, const Release& expecting);
    static bool swap(const NS::URL& staged, const NS::URL& target, const std::string& version);
    static bool run(const std::string& path, const std::vector<std::string>& arguments);

    static inline NS::Timer checkTimer_;           // main thread only
    static inline std::atomic<bool> busy_ = false; // a check is under way
};
