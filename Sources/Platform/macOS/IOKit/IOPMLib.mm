#include "Platform/IOKit/IOPMLib.h"

#include "Platform/macOS/Conversions.h"

#import <IOKit/pwr_mgt/IOPMLib.h>

namespace NS {

static_assert(static_cast<unsigned>(kIOPMAssertionLevelOff) == static_cast<unsigned>(::kIOPMAssertionLevelOff));
static_assert(static_cast<unsigned>(kIOPMAssertionLevelOn) == static_cast<unsigned>(::kIOPMAssertionLevelOn));

IOReturn IOPMAssertionCreateWithName(const std::string& type, IOPMAssertionLevel level, const std::string& name,
                                     IOPMAssertionID* assertion) {
    return ::IOPMAssertionCreateWithName((__bridge CFStringRef)toNSString(type), level,
                                         (__bridge CFStringRef)toNSString(name), assertion);
}

IOReturn IOPMAssertionRelease(IOPMAssertionID assertion) {
    return ::IOPMAssertionRelease(assertion);
}

} // namespace NS
