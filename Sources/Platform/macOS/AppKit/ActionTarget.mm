#include "Platform/macOS/AppKit/ActionTarget.h"

#include "Platform/macOS/Conversions.h"

#include <objc/runtime.h>
#include <utility>

@implementation PlatformActionTarget {
    std::function<void()> _function;
}

- (instancetype)initWithFunction:(std::function<void()>)function {
    if ((self = [super init])) {
        _function = std::move(function);
    }
    return self;
}

- (void)runPlatformAction:(id)__unused sender {
    const auto function = _function; // a copy: the function may give its sender another one, and so end this object
    if (function) {
        macOS::enterAction(function);
    }
}

@end

namespace macOS {

PlatformActionTarget* makeActionTarget(id sender, std::function<void()> function) {
    static const char key = 0;
    PlatformActionTarget* target = [[PlatformActionTarget alloc] initWithFunction:std::move(function)];
    objc_setAssociatedObject(sender, &key, target, OBJC_ASSOCIATION_RETAIN_NONATOMIC);
    return target;
}

} // namespace macOS
