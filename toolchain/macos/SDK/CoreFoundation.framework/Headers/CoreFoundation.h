// The part of CoreFoundation that this project calls.
#pragma once

#include <MacTypes.h> // as Apple's does: its names are in everybody's way
#include <stdint.h>

#define CF_RETURNS_RETAINED __attribute__((cf_returns_retained))
#define CF_BRIDGED_TYPE(T) __attribute__((objc_bridge(T)))

#define CF_ENUM(_type, _name)                                                                                          \
    enum __attribute__((enum_extensibility(open))) _name : _type _name;                                                \
    enum _name : _type

extern "C" {
#pragma clang assume_nonnull begin
#pragma clang arc_cf_code_audited begin

typedef const CF_BRIDGED_TYPE(id) void* CFTypeRef;
typedef const struct CF_BRIDGED_TYPE(NSString) __CFString* CFStringRef;
typedef const struct CF_BRIDGED_TYPE(NSData) __CFData* CFDataRef;
typedef const struct CF_BRIDGED_TYPE(NSNumber) __CFNumber* CFNumberRef;
typedef const struct CF_BRIDGED_TYPE(id) __CFAllocator* CFAllocatorRef;

typedef unsigned char Boolean;
typedef uint8_t UInt8;
typedef long CFIndex;
typedef unsigned long CFTypeID;

typedef struct {
    CFIndex location;
    CFIndex length;
} CFRange;

typedef double CGFloat;
struct CGPoint {
    CGFloat x;
    CGFloat y;
};
typedef struct CGPoint CGPoint;
struct CGSize {
    CGFloat width;
    CGFloat height;
};
typedef struct CGSize CGSize;
struct CGRect {
    CGPoint origin;
    CGSize size;
};
typedef struct CGRect CGRect;

void CFRelease(CFTypeRef cf);
CFTypeID CFGetTypeID(CFTypeRef cf);
CFTypeID CFBooleanGetTypeID(void);
Boolean CFNumberIsFloatType(CFNumberRef number);
CF_RETURNS_RETAINED CFDataRef _Null_unspecified CFDataCreate(CFAllocatorRef _Null_unspecified allocator,
                                                             const UInt8* _Null_unspecified bytes, CFIndex length);
void CFDataGetBytes(CFDataRef data, CFRange range, UInt8* buffer);

#pragma clang arc_cf_code_audited end
#pragma clang assume_nonnull end
}
