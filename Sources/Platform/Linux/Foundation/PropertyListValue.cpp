#include "Platform/Foundation/PropertyListValue.h"

#include "Platform/Linux/Foundation/Plist.h"

namespace NS {

std::optional<Dictionary> dictionaryWithContentsOfURL(const URL& url) {
    return Linux::dictionaryWithContentsOfFile(url.path());
}

} // namespace NS
