#include "Platform/ServiceManagement/AppService.h"

#include "Platform/Linux/Foundation/BundleNative.h"
#include "Platform/Linux/Foundation/Files.h"
#include "Platform/Linux/Native.h"
#include "Platform/Linux/ServiceManagement/AppServiceNative.h"

#include <algorithm>
#include <cerrno>
#include <memory>
#include <string_view>
#include <system_error>
#include <unistd.h>
#include <utility>

// The login item: a desktop entry in the user's autostart folder.
// https://specifications.freedesktop.org/autostart-spec/latest/
// https://specifications.freedesktop.org/desktop-entry-spec/latest/
// Not GKeyFile: it refuses a whole file for one line that is neither key nor group, leaves the quotes of Exec to its
// users, and would make GLib a dependency.

namespace Linux {

namespace {

const BundleNative& bundleOf(const AppService& service) {
    return native(native(service).bundle);
}

std::filesystem::path entryOf(const AppService& service) {
    return configFolder() / "autostart" / (bundleOf(service).fileName() + ".desktop");
}

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t\r");
    return first == text.npos ? std::string_view() : text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

/// Whether a session starts the entry: it has the group "Desktop Entry", and there nothing hides it. GNOME's and
/// Cinnamon's own settings switch an entry off by a key of theirs.
/// https://specifications.freedesktop.org/autostart-spec/latest/
bool isEnabledEntry(std::string_view text) {
    bool isFound = false;
    bool isInside = false;
    while (!text.empty()) {
        const auto line = trimmed(text.substr(0, text.find('\n')));
        text.remove_prefix(std::min(text.find('\n'), text.size() - 1) + 1);
        if (line.starts_with('[')) {
            isInside = line == "[Desktop Entry]";
            isFound = isFound || isInside;
        }
        const auto equals = line.find('=');
        const auto key = trimmed(line.substr(0, equals));
        const auto value = equals == line.npos ? std::string_view() : trimmed(line.substr(equals + 1));
        const bool isOff =
            (key == "Hidden" && value == "true") || (key == "X-GNOME-Autostart-enabled" && value == "false");
        if (isInside && isOff) {
            return false;
        }
    }
    return isFound;
}

/// A text as the value of a key, with the escapes that desktop entries have.
std::string escapedValue(std::string_view text) {
    std::string result;
    for (const char c : text) {
        switch (c) {
        case '\\':
            result += "\\\\";
            break;
        case '\n':
            result += "\\n";
            break;
        case '\r':
            result += "\\r";
            break;
        case '\t':
            result += "\\t";
            break;
        default:
            result += c;
        }
    }
    return result;
}

/// A path as a command line of one argument; "%" would start a field code.
std::string quotedArgument(std::string_view path) {
    std::string result = "\"";
    for (const char c : path) {
        if (std::string_view("\"`$\\").find(c) != std::string_view::npos) {
            result += '\\';
        }
        result += c;
        if (c == '%') {
            result += c;
        }
    }
    return result + '"';
}

/// By TryExec a session passes over the entry once the program is gone: a package cannot remove every account's entry.
std::string entryText(const BundleNative& bundle) {
    const auto executable = bundle.executable.string();
    const auto summary = bundle.text("VantorelSummary");
    return "[Desktop Entry]\n"
           "Type=Application\n"
           "Name=" +
           escapedValue(bundle.displayName()) + (summary ? "\nComment=" + escapedValue(*summary) : std::string()) +
           "\nIcon=" + escapedValue(bundle.fileName()) + "\nExec=" + escapedValue(quotedArgument(executable)) +
           "\nTryExec=" + escapedValue(executable) + "\nX-GNOME-Autostart-enabled=true\n";
}

std::error_code replaceFile(const std::filesystem::path& file, std::string_view text) {
    if (const auto error = makeFolders(file.parent_path())) {
        return error;
    }
    const FolderLock lock(file.parent_path());
    if (lock.error()) {
        return lock.error();
    }
    FileReplacement replacement(file, 0644);
    if (const auto error = replacement.write(text)) {
        return error;
    }
    return replacement.commit();
}

} // namespace

} // namespace Linux

namespace NS {

using namespace Linux;

AppService AppService::mainAppService() {
    return handle<AppService>(std::make_shared<AppServiceNative>(Bundle::mainBundle()));
}

AppServiceStatus AppService::status() const {
    std::string text;
    const auto error = readFile(entryOf(*this), text);
    return !error && isEnabledEntry(text) ? AppServiceStatus::Enabled : AppServiceStatus::NotRegistered;
}

std::optional<Error> AppService::registerAndReturnError() {
    const auto entry = entryOf(*this);
    if (const auto error = replaceFile(entry, entryText(bundleOf(*this)))) {
        return Error{entry.string() + ": " + error.message()};
    }
    return std::nullopt;
}

std::optional<Error> AppService::unregisterAndReturnError() {
    const auto entry = entryOf(*this);
    if (unlink(entry.c_str()) == 0) {
        return std::nullopt;
    }
    const std::error_code error(errno, std::generic_category());
    if (error == std::errc::no_such_file_or_directory) {
        return Error{"The service is not registered: there is no " + entry.string()};
    }
    return Error{entry.string() + ": " + error.message()};
}

} // namespace NS
