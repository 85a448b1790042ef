#include "Platform/Foundation/Locale.h"

#include "Platform/macOS/Conversions.h"

namespace NS {

using namespace macOS;

std::vector<std::string> Locale::preferredLanguages() {
    std::vector<std::string> languages;
    forEach([NSLocale preferredLanguages], [&](NSString* language) { languages.push_back(toString(language)); });
    return languages;
}

} // namespace NS
