#include "Platform/Linux/Foundation/Files.h"
#include "Platform/Linux/Seam.h"

#include <QByteArray>
#include <array>
#include <climits>
#include <mutex>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace Linux {

namespace {

constexpr const char* localTime = "/etc/localtime";
constexpr const char* nameFile = "/etc/timezone";
constexpr const char* database = "/usr/share/zoneinfo/";

// The functions below answer an invalid zone where there is none.

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

QTimeZone zoneOfEnvironment(std::string value) {
    if (value.starts_with(':')) {
        value.erase(0, 1);
    }
    if (value.starts_with('/')) {
        return zoneOfPath(value);
    }
    const QTimeZone zone = zoneOfName(value);
    return zone.isValid() ? zone : zoneOfRule(value);
}

QTimeZone zoneOfLink(const std::string& target) {
    const QTimeZone zone = zoneOfPath(target);
    std::error_code error;
    return zone.isValid() ? zone : zoneOfPath(std::filesystem::canonical(localTime, error)); // over further links
}

QTimeZone zoneOfNameFile() {
    std::string text;
    if (readFile(nameFile, text)) {
        return {};
    }
    return zoneOfName(QByteArray::fromStdString(text.substr(0, text.find('\n'))).trimmed().toStdString());
}

/// What shows that the zone in force may have changed.
struct Sources {
    std::string environment;
    std::string link; // where the link to the zone leads
    std::array<qint64, 3> nameFile;

    bool operator==(const Sources&) const = default;
};

std::string linkTarget() {
    char target[PATH_MAX];
    const ssize_t size = readlink(localTime, target, sizeof target);
    return std::string(target, size > 0 ? static_cast<std::size_t>(size) : 0);
}

std::array<qint64, 3> nameFileState() {
    struct stat status = {};
    if (stat(nameFile, &status) != 0) {
        return {};
    }
    return {static_cast<qint64>(status.st_ino), status.st_ctim.tv_sec, status.st_ctim.tv_nsec};
}

QTimeZone zoneBy(const Sources& sources) {
    QTimeZone zone = zoneOfEnvironment(sources.environment);
    if (!zone.isValid()) {
        zone = zoneOfLink(sources.link);
    }
    if (!zone.isValid()) {
        zone = zoneOfNameFile();
    }
    if (!zone.isValid()) {
        zone = zoneOfName("../../../etc/localtime"); // the zone itself may have been copied there
    }
    return zone.isValid() ? zone : QTimeZone::utc();
}

} // namespace

QTimeZone systemTimeZone() {
    static std::mutex mutex;
    static std::optional<Sources> known;
    static QTimeZone zone;

    const std::lock_guard lock(mutex);
    if (const Sources sources{qgetenv("TZ").toStdString(), linkTarget(), nameFileState()}; sources != known) {
        zone = zoneBy(sources);
        known = sources;
    }
    return zone;
}

} // namespace Linux
