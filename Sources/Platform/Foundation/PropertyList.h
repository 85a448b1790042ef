#pragma once

#include "Platform/Foundation/URL.h"
#include "Platform/Foundation/Value.h"

#include <optional>

namespace NS {

/// The dictionary in a property-list file, if it is one (NSDictionary initWithContentsOfURL:). Safe from any thread.
std::optional<Dictionary> dictionaryWithContentsOfURL(const URL& url);

} // namespace NS
