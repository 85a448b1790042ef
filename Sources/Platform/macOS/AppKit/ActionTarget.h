#pragma once

#import <AppKit/AppKit.h>

#include <functional>

#pragma clang assume_nonnull begin

/// Turns the target and selector of AppKit into a call of a function.
@interface PlatformActionTarget : NSObject
- (instancetype)initWithFunction:(std::function<void()>)function;
- (void)runPlatformAction:(nullable id)sender;
@end

namespace macOS {

/// Makes a new target for `function`, kept by `sender`, which holds its target weakly. Every sender has the one
/// selector, which also makes one group of the radio buttons in a superview.
PlatformActionTarget* makeActionTarget(id sender, std::function<void()> function);

/// `Sender` is an NSControl or an NSMenuItem.
template <class Sender>
void setActionFunction(Sender* _Nonnull sender, std::function<void()> function) {
    [sender setTarget:makeActionTarget(sender, std::move(function))];
    [sender setAction:@selector(runPlatformAction:)];
}

} // namespace macOS

#pragma clang assume_nonnull end
