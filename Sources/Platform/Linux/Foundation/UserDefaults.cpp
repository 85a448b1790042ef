#include "Platform/Foundation/UserDefaults.h"

#include "Platform/Foundation/Bundle.h"
#include "Platform/Foundation/NotificationCenter.h"
#include "Platform/Linux/Foundation/BundleNative.h"
#include "Platform/Linux/Foundation/Files.h"
#include "Platform/Linux/Foundation/UserDefaultsNative.h"
#include "Platform/NoDestructor.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <charconv>
#include <cmath>
#include <iterator>
#include <limits>
#include <string_view>

namespace Linux {

namespace {

std::string_view withoutLeadingSpace(std::string_view text) {
    const auto start = text.find_first_not_of(" \t\n\v\f\r");
    return start == text.npos ? std::string_view() : text.substr(start);
}

bool booleanOfText(std::string_view text) {
    text = withoutLeadingSpace(text);
    if (text.starts_with('+') || text.starts_with('-')) {
        text.remove_prefix(1);
    }
    const auto start = text.find_first_not_of('0');
    return start != text.npos && std::string_view("YyTt123456789").find(text[start]) != std::string_view::npos;
}

std::int64_t integerOfText(std::string_view text) {
    text = withoutLeadingSpace(text);
    const bool isNegative = text.starts_with('-');
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) {
            return 0; // from_chars would take the second sign
        }
    }
    std::int64_t result = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), result);
    if (error == std::errc::result_out_of_range) {
        using Limits = std::numeric_limits<std::int64_t>;
        return isNegative ? Limits::min() : Limits::max();
    }
    return result;
}

std::int64_t integerOfReal(double real) {
    constexpr double limit = 9223372036854775808.0; // 2^63, the first double out of range
    if (std::isnan(real)) {
        return 0;
    }
    if (real >= limit) {
        return std::numeric_limits<std::int64_t>::max();
    }
    return real < -limit ? std::numeric_limits<std::int64_t>::min() : static_cast<std::int64_t>(real);
}

/// As few digits as give the number back, in the notation that %.17g chooses.
std::string textOfReal(double real) {
    const double size = std::abs(real);
    const bool isFixed = size == 0 || (size >= 1e-4 && size < 1e17);
    char text[64];
    const auto [end, error] = std::to_chars(std::begin(text), std::end(text), real,
                                            isFixed ? std::chars_format::fixed : std::chars_format::scientific);
    return {text, end};
}

std::optional<PropertyListValue> firstIn(std::list<PropertyListStore>& stores, const std::string& key) {
    for (auto& store : stores) {
        if (auto value = store.value(key)) {
            return value;
        }
    }
    return std::nullopt;
}

std::shared_ptr<UserDefaultsNative> standardStore() {
    const auto& bundle = native(Bundle::mainBundle());
    auto folders = systemConfigFolders();
    folders.push_back(bundle.path / "Contents/Resources"); // what a package presets comes after all else
    return std::make_shared<UserDefaultsNative>(configFolder() / (bundle.fileName() + ".plist"), folders);
}

} // namespace

UserDefaultsNative::UserDefaultsNative(const std::filesystem::path& file,
                                       const std::vector<std::filesystem::path>& folders)
    : store_(file) {
    for (const auto& folder : folders) {
        forced_.emplace_back(folder / (file.stem().string() + ".managed.plist"));
        preset_.emplace_back(folder / file.filename());
    }
}

void UserDefaultsNative::registerDefaults(const Dictionary& defaults) {
    const std::lock_guard guard(mutex_);
    for (const auto& [key, value] : defaults) {
        registered_.insert_or_assign(key, value);
    }
}

PropertyListValue UserDefaultsNative::value(const std::string& key) {
    auto found = firstIn(forced_, key);
    if (!found) {
        found = store_.value(key);
    }
    if (!found) {
        found = firstIn(preset_, key);
    }
    if (found) {
        return *std::move(found);
    }
    const std::lock_guard guard(mutex_);
    const auto entry = registered_.find(key);
    return entry == registered_.end() ? PropertyListValue() : entry->second;
}

bool UserDefaultsNative::isForced(const std::string& key) {
    return firstIn(forced_, key).has_value();
}

void UserDefaultsNative::setValue(const std::optional<PropertyListValue>& value, const std::string& key) {
    if (isForced(key)) {
        return;
    }
    store_.setValue(value, key);
    scheduleWrite();
}

bool UserDefaultsNative::write() {
    return store_.write();
}

// One for each change: the first of a pass writes them all, the others find nothing to do.
void UserDefaultsNative::scheduleWrite() {
    auto* application = QCoreApplication::instance();
    if (!application) {
        write();
        return;
    }
    const auto later = [self = shared_from_this()] {
        self->write();
        NotificationCenter::defaultCenter().postNotificationName(userDefaultsDidChange);
    };
    QMetaObject::invokeMethod(application, later, Qt::QueuedConnection);
}

} // namespace Linux

namespace NS {

using namespace Linux;

UserDefaults UserDefaults::standardUserDefaults() {
    static NoDestructor<UserDefaults> defaults(handle<UserDefaults>(standardStore()));
    return *defaults;
}

void UserDefaults::registerDefaults(const Dictionary& defaults) {
    native(*this).registerDefaults(defaults);
}

bool UserDefaults::boolForKey(const std::string& key) const {
    const PropertyListValue value = native(*this).value(key);
    if (const auto* boolean = value.boolean()) {
        return *boolean;
    }
    if (const auto* real = value.real()) {
        return *real != 0;
    }
    if (const auto* text = value.string()) {
        return booleanOfText(*text);
    }
    return value.integer().value_or(0) != 0;
}

std::int64_t UserDefaults::integerForKey(const std::string& key) const {
    const PropertyListValue value = native(*this).value(key);
    if (const auto* boolean = value.boolean()) {
        return *boolean ? 1 : 0;
    }
    if (const auto* real = value.real()) {
        return integerOfReal(*real);
    }
    if (const auto* text = value.string()) {
        return integerOfText(*text);
    }
    return value.integer().value_or(0);
}

std::optional<std::string> UserDefaults::stringForKey(const std::string& key) const {
    const PropertyListValue value = native(*this).value(key);
    if (const auto* text = value.string()) {
        return *text;
    }
    if (const auto* boolean = value.boolean()) {
        return *boolean ? "1" : "0";
    }
    if (const auto* real = value.real()) {
        return textOfReal(*real);
    }
    const auto integer = value.integer();
    return integer ? std::optional(std::to_string(*integer)) : std::nullopt;
}

std::optional<Dictionary> UserDefaults::dictionaryForKey(const std::string& key) const {
    const PropertyListValue value = native(*this).value(key);
    const auto* dictionary = value.dictionary();
    return dictionary ? std::optional(*dictionary) : std::nullopt;
}

bool UserDefaults::objectIsForcedForKey(const std::string& key) const {
    return native(*this).isForced(key);
}

void UserDefaults::setBool(bool value, const std::string& key) {
    setObject(value, key);
}

void UserDefaults::setInteger(std::int64_t value, const std::string& key) {
    setObject(value, key);
}

void UserDefaults::setObject(const std::optional<PropertyListValue>& value, const std::string& key) {
    native(*this).setValue(value, key);
}

bool UserDefaults::synchronize() {
    return native(*this).write();
}

} // namespace NS
