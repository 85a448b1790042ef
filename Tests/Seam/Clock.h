#pragma once

#include "Platform/Foundation/Date.h"

#include <string>

/// The time of the unit tests: it stands still until a test moves it.
namespace Seam {

/// Puts the user into a zone, such as "Europe/Berlin". Tells nobody.
void setTimeZone(const std::string& identifier);

/// Sets the clock without doing what is due. Tells nobody.
void setNow(const NS::Date& now);

} // namespace Seam
