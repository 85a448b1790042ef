#pragma once

#include "Platform/Foundation/URL.h"

#include <string>

namespace NS {

/// The text as a file in UTF-8, atomically: what stood there, or all of the text. Whether it was written. Safe from
/// any thread (NSString writeToURL:atomically:encoding:error:).
bool writeToURL(const std::string& text, const URL& url);

} // namespace NS
