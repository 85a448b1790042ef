#include "Platform/Foundation/Date.h"

#include "Platform/macOS/Conversions.h"

namespace NS {

Date Date::date() {
    return toDate([NSDate date]);
}

} // namespace NS
