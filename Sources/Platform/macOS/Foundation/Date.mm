#include "Platform/Foundation/Date.h"

#include "Platform/macOS/Conversions.h"

namespace NS {

using namespace macOS;

Date Date::date() {
    return toDate([NSDate date]);
}

} // namespace NS
