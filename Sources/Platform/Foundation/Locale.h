#pragma once

#include <string>
#include <vector>

namespace NS::Locale {

/// The user's languages, most preferred first, as BCP 47 tags ("pt-BR", "en"). May be empty.
std::vector<std::string> preferredLanguages();

} // namespace NS::Locale
