#include "Platform/Linux/Seam.h"

#include <QByteArray>
#include <array>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace Linux {

namespace {

constexpr const char* localTime = "/etc/localtime";
constexpr const char* database = "/usr/share/zoneinfo/";

// The functions below return an invalid zone where there is none.

QTimeZone zoneOfName(const std::string& name) {
    std::error_code error;
    // Without a file of that name Qt would still take any word for a zone, that of Greenwich.
    if (!std::filesystem::is_regular_file(database + name, error)) {
        return {};
    }
    return QTimeZone(QByteArray::fromStdString(name));
}

QTimeZone zoneOfPath(const std::string& path) {
    constexpr std::string_view folder = "/zoneinfo/";
    const auto at = path.rfind(folder);
    return at == path.npos ? QTimeZone() : zoneOfName(path.substr(at + folder.size()));
}

/// The zone of a rule like "CET-1CEST,M3.5.0,M10.5.0/3".
QTimeZone zoneOfRule(std::string rule) {
    if (rule.find_first_of("0123456789") == rule.npos) { // again a word that Qt would take for Greenwich
        return {};
    }
    // Under another name: "UTC-5" lies five hours east of Greenwich, but Qt has a zone of its own under that name, to
    // the west, and none that goes by "UTC5" or "GMT-1".
    if (rule.starts_with("UTC") || rule.starts_with("GMT")) {
        rule.replace(0, 3, "ANY");
    }
    return QTimeZone(QByteArray::fromStdString(rule));
}

/// The zone that a file anywhere holds. Qt keeps what it has read under the zone's name for good: another `generation`
/// is another name for the same file.
QTimeZone zoneOfFile(const std::string& path, int generation) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        return {};
    }
    QByteArray name("../../..");
    for (int count = 0; count < generation; ++count) {
        name += "/.";
    }
    return QTimeZone(name + QByteArray::fromStdString(path));
}

/// What TZ asks for, by the C library's rules: see
/// https://pubs.opengroup.org/onlinepubs/9699919799/basedefs/V1_chap08.html
QTimeZone zoneOfEnvironment(std::string value, int generation) {
    if (value.starts_with(':')) {
        value.erase(0, 1);
    }
    if (value.starts_with('/')) {
        const QTimeZone zone = zoneOfPath(value);
        return zone.isValid() ? zone : zoneOfFile(value, generation);
    }
    const QTimeZone zone = zoneOfName(value);
    return zone.isValid() ? zone : zoneOfRule(value);
}

QTimeZone zoneOfLink(const std::string& target) {
    const QTimeZone zone = zoneOfPath(target);
    std::error_code error;
    return zone.isValid() ? zone : zoneOfPath(std::filesystem::canonical(localTime, error)); // over further links
}

/// The sources of the zone in force: while they are the same, so is the zone.
struct Sources {
    std::optional<std::string> environment;
    std::string link; // where the link to the zone leads
    std::array<qint64, 5> file;

    bool operator==(const Sources&) const = default;
};

std::optional<std::string> environment() {
    const char* value = std::getenv("TZ");
    return value ? std::optional<std::string>(value) : std::nullopt;
}

std::string linkTarget() {
    char target[PATH_MAX];
    const ssize_t size = readlink(localTime, target, sizeof target);
    return std::string(target, size > 0 ? static_cast<std::size_t>(size) : 0);
}

std::array<qint64, 5> fileState() {
    struct stat status = {};
    if (stat(localTime, &status) != 0) {
        return {};
    }
    return {static_cast<qint64>(status.st_dev), static_cast<qint64>(status.st_ino), static_cast<qint64>(status.st_size),
            status.st_ctim.tv_sec, status.st_ctim.tv_nsec};
}

// As the C library and `date` do: TZ, or else /etc/localtime, and nothing besides. /etc/timezone is a note of Debian's
// tools, which grows stale where the zone is changed by others.
QTimeZone zoneBy(const Sources& sources, int generation) {
    QTimeZone zone;
    if (sources.environment) {
        zone = zoneOfEnvironment(*sources.environment, generation);
    } else {
        zone = zoneOfLink(sources.link);
        if (!zone.isValid()) {
            zone = zoneOfFile(localTime, generation);
        }
    }
    return zone.isValid() ? zone : QTimeZone::utc();
}

} // namespace

QTimeZone systemTimeZone() {
    static std::mutex mutex;
    static std::optional<Sources> known;
    static QTimeZone zone;
    static int generation = 0;

    const std::lock_guard lock(mutex);
    if (const Sources sources{environment(), linkTarget(), fileState()}; sources != known) {
        zone = zoneBy(sources, generation++);
        known = sources;
    }
    return zone;
}

} // namespace Linux
