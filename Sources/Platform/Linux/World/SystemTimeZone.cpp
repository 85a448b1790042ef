#include "Platform/Linux/Foundation/SystemTimeZone.h"

#include "Platform/Linux/Foundation/Files.h"

#include <QByteArray>
#include <array>
#include <mutex>
#include <sys/stat.h>

namespace NS {

namespace {

const std::filesystem::path localTime = "/etc/localtime";
const std::filesystem::path nameFile = "/etc/timezone";
const std::string database = "/usr/share/zoneinfo/";

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

QTimeZone zoneOfLink() {
    std::error_code error;
    const QTimeZone zone = zoneOfPath(std::filesystem::read_symlink(localTime, error));
    return zone.isValid() ? zone : zoneOfPath(std::filesystem::canonical(localTime, error));
}

QTimeZone zoneOfNameFile() {
    std::string text;
    if (readFile(nameFile, text)) {
        return {};
    }
    return zoneOfName(QByteArray::fromStdString(text.substr(0, text.find('\n'))).trimmed().toStdString());
}

QTimeZone zoneInForce(const std::string& environment) {
    QTimeZone zone = zoneOfEnvironment(environment);
    if (!zone.isValid()) {
        zone = zoneOfLink();
    }
    if (!zone.isValid()) {
        zone = zoneOfNameFile();
    }
    if (!zone.isValid()) {
        zone = zoneOfName("../../.." + localTime.string()); // the zone itself may have been copied there
    }
    return zone.isValid() ? zone : QTimeZone::utc();
}

/// What changes whenever a file does, or another takes its place.
using FileState = std::array<qint64, 3>;

FileState stateOf(const std::filesystem::path& file) {
    struct stat status = {};
    if (stat(file.c_str(), &status) != 0) {
        return {};
    }
    return {static_cast<qint64>(status.st_ino), status.st_ctim.tv_sec, status.st_ctim.tv_nsec};
}

/// All that the zone in force depends on.
struct Sources {
    std::string environment = qgetenv("TZ").toStdString();
    std::filesystem::path link = linkTarget();
    FileState localTimeState = stateOf(localTime);
    FileState nameFileState = stateOf(nameFile);

    bool operator==(const Sources&) const = default;

private:
    static std::filesystem::path linkTarget() {
        std::error_code error;
        return std::filesystem::read_symlink(localTime, error);
    }
};

} // namespace

QTimeZone systemTimeZone() {
    static std::mutex mutex;
    static Sources known;
    static QTimeZone zone = zoneInForce(known.environment);

    const std::lock_guard lock(mutex);
    if (Sources sources; sources != known) {
        zone = zoneInForce(sources.environment);
        known = std::move(sources);
    }
    return zone;
}

} // namespace NS
