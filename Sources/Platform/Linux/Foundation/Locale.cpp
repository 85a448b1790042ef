#include "Platform/Foundation/Locale.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace NS::Locale {

namespace {

std::string_view environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

/// What the environment sets for messages, as far as it sets anything.
std::string_view localeInForce() {
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (const auto value = environment(name); !value.empty()) {
            return value;
        }
    }
    return {};
}

bool consistsOf(std::string_view text, int (*kind)(int)) {
    return std::all_of(text.begin(), text.end(), [kind](unsigned char c) { return c < 0x80 && kind(c) != 0; });
}

std::string mapped(std::string_view text, int (*change)(int)) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [change](unsigned char c) { return static_cast<char>(change(c)); });
    return result;
}

/// Takes away from `text` what stands from the first `mark` on, and gives it back without the mark.
std::string_view cutFrom(std::string_view& text, char mark) {
    const auto at = text.find(mark);
    if (at == text.npos) {
        return {};
    }
    const auto part = text.substr(at + 1);
    text = text.substr(0, at);
    return part;
}

std::string_view scriptOfModifier(std::string_view modifier) {
    constexpr std::array<std::pair<std::string_view, std::string_view>, 4> scripts = {
        {{"latin", "Latn"}, {"cyrillic", "Cyrl"}, {"devanagari", "Deva"}, {"arabic", "Arab"}}};
    const auto* entry =
        std::find_if(scripts.begin(), scripts.end(), [modifier](const auto& row) { return row.first == modifier; });
    return entry == scripts.end() ? std::string_view() : entry->second;
}

/// The BCP 47 tag of a locale name like "pt_BR.UTF-8"; empty when that names no language.
std::string tagOfLocale(std::string_view name) {
    const auto modifier = cutFrom(name, '@');
    cutFrom(name, '.');
    const bool hasTerritory = name.find('_') != name.npos;
    const auto territory = cutFrom(name, '_');
    const bool isLanguage = (name.size() == 2 || name.size() == 3) && consistsOf(name, std::isalpha);
    const bool isTerritory = (territory.size() == 2 && consistsOf(territory, std::isalpha)) ||
                             (territory.size() == 3 && consistsOf(territory, std::isdigit));
    if (!isLanguage || hasTerritory != isTerritory) {
        return {};
    }
    std::string tag = mapped(name, std::tolower);
    if (const auto script = scriptOfModifier(modifier); !script.empty()) {
        tag.append("-").append(script);
    }
    if (hasTerritory) {
        tag.append("-").append(mapped(territory, std::toupper));
    }
    return modifier == "valencia" ? tag + "-valencia" : tag;
}

void append(std::vector<std::string>& tags, std::string_view locale) {
    const auto tag = tagOfLocale(locale);
    if (!tag.empty() && std::find(tags.begin(), tags.end(), tag) == tags.end()) {
        tags.push_back(tag);
    }
}

} // namespace

std::vector<std::string> preferredLanguages() {
    const auto locale = localeInForce();
    std::vector<std::string> tags;
    if (locale != "C" && locale != "POSIX") { // who asks for no language gets none, as everywhere on the system
        auto rest = environment("LANGUAGE");
        while (!rest.empty()) {
            auto entry = rest;
            rest = cutFrom(entry, ':');
            append(tags, entry);
        }
    }
    append(tags, locale);
    return tags;
}

} // namespace NS::Locale
