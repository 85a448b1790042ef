#include "Updater.h"

#include "FatalError.h"
#include "Platform/AppKit/Application.h"
#include "Platform/CryptoKit/SHA256.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Foundation/Bundle.h"
#include "Platform/Foundation/FileHandle.h"
#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/JSONSerialization.h"
#include "Platform/Foundation/Log.h"
#include "Platform/Foundation/ProcessInfo.h"
#include "Platform/Foundation/PropertyListValue.h"
#include "Platform/Foundation/RunLoop.h"
#include "Platform/Foundation/Task.h"
#include "Platform/Foundation/URLSession.h"
#include "Platform/Foundation/UUID.h"
#include "Prefs.h"
#include "Product.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <memory>
#include <thread>

namespace {

constexpr double checkInterval = 86400; // seconds
constexpr double checkTolerance = 3600;
constexpr double firstCheckDelay = 12;
constexpr std::int64_t maxAttempts = 3;
constexpr double manifestTimeout = 15; // seconds of silence
constexpr double imageTimeout = 300;
constexpr auto helperTimeout = std::chrono::seconds(3);
constexpr auto helperPollInterval = std::chrono::milliseconds(50);
constexpr unsigned scriptPermissions = 0755;
constexpr long statusOK = 200;

constexpr char baseVariable[] = "KORVEX_UPDATE_BASE";
constexpr char diskImageTool[] = "/usr/bin/hdiutil";
constexpr char manifestPath[] = "updates/vantorel.json";

std::string bundleName() {
    return std::string(Product::name) + ".app";
}

// Replaces the bundle after the application has quit: it cannot overwrite itself while it runs.
constexpr std::string_view helperScript = R"sh(#!/bin/sh
TARGET="$1"
STAGED="$2"
PID="$3"
STARTED="$4"

# Tell the app the script parsed and is running; without this it would
# quit on faith and a broken script would strand the user.
: > "$STARTED"

# Wait for the old copy to quit (bounded, so a hung app cannot wedge us).
i=0
while kill -0 "$PID" 2>/dev/null && [ $i -lt 100 ]; do sleep 0.2; i=$((i+1)); done

BACKUP="$TARGET.old-$$"
if ! mv "$TARGET" "$BACKUP"; then
    /usr/bin/open "$TARGET" 2>/dev/null || true
    exit 1
fi
if /usr/bin/ditto "$STAGED" "$TARGET"; then
    /usr/bin/xattr -dr com.apple.quarantine "$TARGET" 2>/dev/null || true
    rm -rf "$BACKUP"
else
    rm -rf "$TARGET"
    mv "$BACKUP" "$TARGET"
fi
rm -rf "$(dirname "$STAGED")"
/usr/bin/open "$TARGET"
rm -f "$STARTED" "$0")sh";
static_assert(helperScript.size() == 755);

bool isOverridden() {
    return NS::ProcessInfo::processInfo().environment().contains(baseVariable);
}

const std::string* stringIn(const NS::Dictionary& dictionary, const char* key) {
    const auto entry = dictionary.find(key);
    return entry == dictionary.end() ? nullptr : entry->second.string();
}

const NS::Dictionary* dictionaryIn(const NS::Dictionary& dictionary, const char* key) {
    const auto entry = dictionary.find(key);
    return entry == dictionary.end() ? nullptr : entry->second.dictionary();
}

std::int64_t sizeOf(const NS::Dictionary& latest) {
    const auto size = latest.find("size");
    return size == latest.end() ? 0 : size->second.integer().value_or(0);
}

std::map<std::string, std::string> notesOf(const NS::Dictionary& latest) {
    std::map<std::string, std::string> notes;
    if (const auto* entries = dictionaryIn(latest, "notes")) {
        for (const auto& [language, value] : *entries) {
            const auto* text = value.string();
            if (!text) {
                return {}; // one note that is not a text invalidates all
            }
            notes.emplace(language, *text);
        }
    }
    return notes;
}

std::string lowercased(std::string text) {
    std::ranges::transform(text, text.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; });
    return text;
}

// An optional sign and decimal digits; 0 for anything else, and for numbers beyond 64 bits.
std::int64_t numberOf(std::string_view piece) {
    if (piece.starts_with('+')) {
        piece.remove_prefix(1);
        if (piece.starts_with('-')) {
            return 0;
        }
    }
    std::int64_t number = 0;
    const char* end = piece.data() + piece.size();
    const auto result = std::from_chars(piece.data(), end, number);
    return result.ec == std::errc() && result.ptr == end ? number : 0;
}

std::vector<std::int64_t> parts(std::string_view version) {
    std::vector<std::int64_t> numbers;
    while (!version.empty()) {
        const auto piece = version.substr(0, version.find('.'));
        if (!piece.empty()) {
            numbers.push_back(numberOf(piece));
        }
        version.remove_prefix(std::min(piece.size() + 1, version.size()));
    }
    return numbers;
}

NS::URL temporaryURL(const std::string& name) {
    return NS::FileManager::defaultManager().temporaryDirectory().URLByAppendingPathComponent(name);
}

// In pieces, so that an image of any size costs no more memory than a small one; small ones, which stay in the cache.
std::optional<std::string> digestOfFile(const std::string& path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
    if (!file) {
        return std::nullopt;
    }
    std::setvbuf(file.get(), nullptr, _IONBF, 0);
    NS::SHA256 hash;
    std::vector<std::uint8_t> piece(std::size_t{64} << 10);
    while (const auto count = std::fread(piece.data(), 1, piece.size(), file.get())) {
        hash.update(piece.data(), count);
    }
    if (std::ferror(file.get())) {
        return std::nullopt;
    }
    std::string text;
    for (const auto byte : hash.finalize()) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", byte);
        text += digits;
    }
    return text;
}

/// Where the image has the application: a link in its place is followed. Absent when that leads out of the image.
NS::URL applicationIn(const NS::URL& mountPoint) {
    auto application = mountPoint.URLByAppendingPathComponent(bundleName());
    if (!NS::FileManager::defaultManager().destinationOfSymbolicLinkAtPath(application.path())) {
        return application;
    }
    const auto target = application.URLByResolvingSymlinksInPath();
    return target.path().starts_with(mountPoint.URLByResolvingSymlinksInPath().path() + "/") ? target : NS::URL();
}

bool isApplicationExpected(const NS::URL& application, const std::string& version) {
    constexpr char identifierKey[] = "CFBundleIdentifier";
    constexpr char versionKey[] = "CFBundleShortVersionString";
    const auto info = NS::dictionaryWithContentsOfURL(application.URLByAppendingPathComponent("Contents/Info.plist"),
                                                      {identifierKey, versionKey});
    if (!info) {
        return false;
    }
    const auto* identifier = stringIn(*info, identifierKey);
    if ((identifier ? std::optional(*identifier) : std::nullopt) != NS::Bundle::mainBundle().bundleIdentifier()) {
        return false;
    }
    const auto* shortVersion = stringIn(*info, versionKey);
    return shortVersion && *shortVersion == version;
}

bool appearsInTime(const std::string& marker) {
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + helperTimeout;
    while (Clock::now() < deadline) {
        if (NS::FileManager::defaultManager().fileExistsAtPath(marker)) {
            return true;
        }
        std::this_thread::sleep_for(helperPollInterval);
    }
    return false;
}

} // namespace

void Updater::start() {
    if (checkTimer_) {
        checkTimer_.invalidate();
    }
    const auto check = [] { NS::DispatchQueue::global().async([] { checkAndInstall(false); }); };
    checkTimer_ = NS::Timer::initWithFireDate(NS::Date::date().dateByAddingTimeInterval(checkInterval), checkInterval,
                                              /*repeats=*/true, check);
    checkTimer_.setTolerance(checkTolerance);
    NS::RunLoop::mainRunLoop().addTimer(checkTimer_, NS::RunLoopMode::Common);
    NS::DispatchQueue::main().asyncAfter(firstCheckDelay, check);
}

bool Updater::checkAndInstall(bool userInitiated) {
    if (!userInitiated && !Prefs::d().boolForKey(Prefs::autoUpdate)) {
        return false;
    }
    if (busy_.exchange(true)) {
        return false;
    }
    const auto release = fetchLatest();
    const bool installed = release && isInstallable(*release) && install(*release);
    busy_ = false;
    return installed;
}

bool Updater::isInstallable(const Release& release) {
    return isNewer(release.version, currentVersion()) && Prefs::updateAttempts(release.version) < maxAttempts &&
           !(*shouldPostpone && (*shouldPostpone)());
}

NS::URL Updater::baseURL() {
    const auto environment = NS::ProcessInfo::processInfo().environment();
    // An empty text is a URL to some systems.
    if (const auto base = environment.find(baseVariable); base != environment.end() && !base->second.empty()) {
        if (auto url = NS::URL::URLWithString(base->second)) {
            return url;
        }
    }
    auto builtIn = NS::URL::URLWithString(std::string("https://") + Product::updateHost);
    if (!builtIn) {
        fatalError("the built-in address of the update server is not a URL");
    }
    return builtIn;
}

std::optional<Updater::Release> Updater::fetchLatest() {
    const auto url = baseURL().URLByAppendingPathComponent(manifestPath);
    if (url.scheme() != "https" && !isOverridden()) {
        return std::nullopt;
    }
    const auto answer = NS::URLSession::sharedSession().dataForRequest(
        {url, NS::URLRequestCachePolicy::ReloadIgnoringLocalCacheData, manifestTimeout});
    if (!answer || !answer->response || answer->response->statusCode != statusOK) {
        return std::nullopt;
    }
    return parseManifest(answer->data);
}

std::optional<Updater::Release> Updater::parseManifest(const std::string& text) {
    const std::vector<NS::JSONSerialization::KeyPath> wanted = {
        {"latest", "version"}, {"latest", "file"}, {"latest", "sha256"}, {"latest", "size"}, {"latest", "notes", "*"}};
    const auto manifest = NS::JSONSerialization::JSONObjectWithData(text, wanted);
    const auto* document = manifest ? manifest->dictionary() : nullptr;
    const auto* latest = document ? dictionaryIn(*document, "latest") : nullptr;
    if (!latest) {
        return std::nullopt;
    }
    const auto* version = stringIn(*latest, "version");
    const auto* file = stringIn(*latest, "file");
    const auto* sha256 = stringIn(*latest, "sha256");
    if (!version || !file || !sha256) {
        return std::nullopt;
    }
    return Release{*version, *file, lowercased(*sha256), sizeOf(*latest), notesOf(*latest)};
}

bool Updater::isNewer(const std::string& candidate, const std::string& current) {
    auto ours = parts(current);
    auto theirs = parts(candidate);
    const auto length = std::max(ours.size(), theirs.size());
    ours.resize(length);
    theirs.resize(length);
    return theirs > ours;
}

std::string Updater::currentVersion() {
    const auto version = NS::Bundle::mainBundle().objectForInfoDictionaryKey("CFBundleShortVersionString");
    return version && version->string() ? *version->string() : "0";
}

bool Updater::install(const Release& release) {
    const auto target = NS::Bundle::mainBundle().bundleURL();
    const auto fileManager = NS::FileManager::defaultManager();
    if (target.pathExtension() != "app" ||
        !fileManager.isWritableFileAtPath(target.URLByDeletingLastPathComponent().path())) {
        return false;
    }
    using namespace std::string_view_literals;
    if (release.version.find_first_of("/\0"sv) != std::string::npos) { // file names are made of it, not paths
        return false;
    }
    if (!fileManager.fileExistsAtPath(diskImageTool)) { // no Mac: nothing here could open the image
        return false;
    }
    const auto dmg = download(release);
    if (!dmg) {
        return false;
    }
    const auto staged = mountAndStage(dmg, release);
    const bool swapped = staged && swap(staged, target, release.version);
    fileManager.removeItemAtURL(dmg);
    return swapped;
}

/// The verified disk image, which the caller then owns; absent on any failure.
NS::URL Updater::download(const Release& release) {
    const auto answer = NS::URLSession::sharedSession().downloadForRequest(
        {baseURL().URLByAppendingPathComponent(release.file), NS::URLRequestCachePolicy::UseProtocolCachePolicy,
         imageTimeout});
    if (!answer || !answer->response || answer->response->statusCode != statusOK) {
        return {};
    }
    const auto digest = digestOfFile(answer->location.path());
    if (!digest) {
        return {};
    }
    const auto fileManager = NS::FileManager::defaultManager();
    if (*digest != release.sha256) {
        NS::Log("Updater: checksum mismatch, discarding download");
        fileManager.removeItemAtURL(answer->location);
        return {};
    }
    const auto dmg = temporaryURL(std::string(Product::name) + "-" + release.version + ".dmg");
    fileManager.removeItemAtURL(dmg); // of an earlier attempt
    return fileManager.moveItemAtURL(answer->location, dmg) ? dmg : NS::URL();
}

/// A copy of the application in the image, in a folder of its own that the caller then owns; absent unless it is this
/// application in the version promised. The image is mounted meanwhile.
NS::URL Updater::mountAndStage(const NS::URL& dmg, const Release& expecting) {
    const auto mountPoint = temporaryURL(std::string(Product::name) + "-mount-" + NS::UUID::init().UUIDString());
    if (!run(diskImageTool, {"attach", dmg.path(), "-nobrowse", "-readonly", "-mountpoint", mountPoint.path()})) {
        return {};
    }
    auto staged = stage(mountPoint, expecting);
    run(diskImageTool, {"detach", mountPoint.path(), "-force"});
    return staged;
}

NS::URL Updater::stage(const NS::URL& mountPoint, const Release& expecting) {
    const auto fileManager = NS::FileManager::defaultManager();
    const auto mounted = applicationIn(mountPoint);
    if (!mounted || !fileManager.fileExistsAtPath(mounted.path()) ||
        !isApplicationExpected(mounted, expecting.version)) {
        return {};
    }
    const auto folder = temporaryURL(std::string(Product::name) + "-staged-" + expecting.version);
    fileManager.removeItemAtURL(folder); // of an earlier attempt
    fileManager.createDirectoryAtURL(folder, /*withIntermediateDirectories=*/true);
    auto staged = folder.URLByAppendingPathComponent(bundleName());
    return run("/usr/bin/ditto", {mounted.path(), staged.path()}) ? staged : NS::URL();
}

/// Hands over to the helper script and asks the application to quit, but not before the helper has shown that it runs.
bool Updater::swap(const NS::URL& staged, const NS::URL& target, const std::string& version) {
    const auto nameOf = [](const char* extension) {
        return std::string(Product::name) + "-update-" + NS::UUID::init().UUIDString() + extension;
    };
    const auto script = temporaryURL(nameOf(".sh"));
    const auto marker = temporaryURL(nameOf(".started"));
    const auto fileManager = NS::FileManager::defaultManager();
    if (!NS::writeToURL(std::string(helperScript), script)) {
        return false;
    }
    fileManager.setAttributes({.posixPermissions = scriptPermissions}, script.path());
    auto helper = NS::Task::init();
    helper.setExecutableURL(NS::URL::fileURLWithPath("/bin/sh"));
    helper.setArguments({script.path(), target.path(), staged.path(),
                         std::to_string(NS::ProcessInfo::processInfo().processIdentifier()), marker.path()});
    if (!helper.launchAndReturnError()) {
        return false;
    }
    if (!appearsInTime(marker.path())) {
        NS::Log("Updater: helper did not start, keeping the current version");
        fileManager.removeItemAtURL(script);
        fileManager.removeItemAtURL(staged.URLByDeletingLastPathComponent());
        return false;
    }
    Prefs::noteUpdateAttempt(version);
    NS::DispatchQueue::main().async([] { NS::Application::sharedApplication().terminate(); });
    return true;
}

bool Updater::run(const std::string& path, const std::vector<std::string>& arguments) {
    auto tool = NS::Task::init();
    tool.setExecutableURL(NS::URL::fileURLWithPath(path));
    tool.setArguments(arguments);
    tool.setStandardOutput(NS::FileHandle::fileHandleWithNullDevice());
    tool.setStandardError(NS::FileHandle::fileHandleWithNullDevice());
    if (!tool.launchAndReturnError()) {
        return false;
    }
    tool.waitUntilExit();
    return tool.terminationStatus() == 0;
}
