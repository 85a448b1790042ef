#include "Platform/Foundation/Date.h"

#include <chrono>

namespace NS {

Date Date::date() {
    const std::chrono::duration<double> sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return dateWithTimeIntervalSince1970(sinceEpoch.count());
}

} // namespace NS
