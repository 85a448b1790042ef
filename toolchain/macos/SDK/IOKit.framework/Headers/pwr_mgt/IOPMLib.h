// The part of IOKit's power management that this project calls.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <mach/kern_return.h>

typedef kern_return_t IOReturn;
typedef uint32_t IOPMAssertionID;
typedef uint32_t IOPMAssertionLevel;

enum {
    kIOPMAssertionLevelOff = 0,
    kIOPMAssertionLevelOn = 255,
};

extern "C" {
IOReturn IOPMAssertionCreateWithName(CFStringRef _Nullable type, IOPMAssertionLevel level, CFStringRef _Nullable name,
                                     IOPMAssertionID* _Nullable assertion);
IOReturn IOPMAssertionRelease(IOPMAssertionID assertion);
}
