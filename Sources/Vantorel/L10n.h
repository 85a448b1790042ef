#pragma once

#include "Platform/Foundation/Locale.h"

#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

/// The languages of the interface.
enum class Language { en, ptBR };

/// Every text of the interface, and the language in force. Main thread only; the table itself is safe from any thread.
namespace L10n {

/// The stored form of a language: "en" or "pt-BR".
const char* rawValue(Language language);
/// The name of a language in that language itself, never translated.
const char* label(Language language);

struct Text {
    std::string_view en;
    std::string_view pt;
};

using Table = std::unordered_map<std::string_view, Text>;

/// A table of these rows. A key that comes twice is a programming error.
Table makeTable(std::span<const std::pair<std::string_view, Text>> rows);

const Table& table();

/// The text of `key` in the current language; the key itself when the table lacks it.
std::string t(std::string_view key);

/// Portuguese when the first of the user's languages is any Portuguese, otherwise English.
Language detectSystemLanguage(const std::vector<std::string>& languages = NS::Locale::preferredLanguages());

/// The stored language, or the detected one when none that we know is stored.
Language current();
/// Stores the language and announces it, even when it is the one in force.
void setCurrent(Language language);

/// The name of the notification that `setCurrent` posts.
const std::string& languageDidChange();

} // namespace L10n
