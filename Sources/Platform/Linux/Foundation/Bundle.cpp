#include "Platform/Foundation/Bundle.h"

#include "Platform/Linux/Foundation/BundleNative.h"
#include "Platform/Linux/Foundation/Plist.h"
#include "Platform/NoDestructor.h"

#include <memory>
#include <utility>

namespace Linux {

namespace {

/// X.app, for an executable in X.app/Contents/MacOS.
std::optional<std::filesystem::path> applicationAround(const std::filesystem::path& executable) {
    const auto folder = executable.parent_path();
    const auto application = folder.parent_path().parent_path();
    const bool isApplication = folder.filename() == "MacOS" && folder.parent_path().filename() == "Contents" &&
                               application.extension() == ".app";
    return isApplication ? std::optional(application) : std::nullopt;
}

Dictionary infoDictionary(const std::filesystem::path& executable) {
    const auto application = applicationAround(executable);
    const auto info = application ? dictionaryWithContentsOfFile(*application / "Contents/Info.plist") : std::nullopt;
    return info.value_or(Dictionary());
}

} // namespace

BundleNative::BundleNative(std::filesystem::path executablePath)
    : executable(std::move(executablePath)), path(applicationAround(executable).value_or(executable.parent_path())),
      info(infoDictionary(executable)) {}

std::optional<std::string> BundleNative::text(const std::string& key) const {
    const auto entry = info.find(key);
    const auto* text = entry == info.end() ? nullptr : entry->second.string();
    return text && !text->empty() ? std::optional(*text) : std::nullopt;
}

std::string BundleNative::displayName() const {
    return text("CFBundleName").value_or(executable.filename().string());
}

std::string BundleNative::fileName() const {
    return text("CFBundleIdentifier").value_or(executable.filename().string());
}

} // namespace Linux

namespace NS {

using namespace Linux;

Bundle Bundle::mainBundle() {
    static NoDestructor<Bundle> bundle(
        handle<Bundle>(std::make_shared<BundleNative>(std::filesystem::read_symlink("/proc/self/exe"))));
    return *bundle;
}

std::optional<std::string> Bundle::bundleIdentifier() const {
    return native(*this).text("CFBundleIdentifier");
}

URL Bundle::bundleURL() const {
    return URL::fileURLWithPath(native(*this).path.string());
}

std::optional<PropertyListValue> Bundle::objectForInfoDictionaryKey(const std::string& key) const {
    const auto& info = native(*this).info;
    const auto entry = info.find(key);
    return entry == info.end() ? std::nullopt : std::optional(entry->second);
}

} // namespace NS
