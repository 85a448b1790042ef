#include "Platform/IOKit/IOPMLib.h"

#include "Platform/macOS/Conversions.h"

#import <IOKit/pwr_mgt/IOPMLib.h>

namespace NS {

using namespace macOS;

static_assert(static_cast<unsigned>(IOPMAssertionLevel::Off) == static_cast<unsigned>(kIOPMAssertionLevelOff));
static_assert(static_cast<unsigned>(IOPMAssertionLevel::On) == static_cast<unsigned>(kIOPMAssertionLevelOn));

IOReturn IOPMAssertionCreateWithName(const std::string& type, IOPMAssertionLevel level, const std::string& name,
                                     IOPMAssertionID* assertion) {
    return ::IOPMAssertionCreateWithName((__bridge CFStringRef)toNSString(type),
                                         static_cast<::IOPMAssertionLevel>(level),
                                         (__bridge CFStringRef)toNSString(name), assertion);
}

IOReturn IOPMAssertionRelease(IOPMAssertionID assertion) {
    return ::IOPMAssertionRelease(assertion);
}

} // namespace NS
