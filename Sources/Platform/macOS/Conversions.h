#pragma once

#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Error.h"
#include "Platform/Foundation/Geometry.h"
#include "Platform/Foundation/NotificationCenter.h"
#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/PropertyListValue.h"

#import <Foundation/Foundation.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#pragma clang assume_nonnull begin

namespace NS {

/// Between handles and the Objective-C objects behind them.
struct Bridge {
    template <class Handle>
    static Handle handle(id _Nullable object) {
        Handle result;
        static_cast<Object&>(result).native_ = retained(object);
        return result;
    }

    static id _Null_unspecified object(const Object& handle) {
        return (__bridge id) static_cast<void*>(handle.native_.get());
    }

private:
    static std::shared_ptr<Native> retained(id _Nullable object);
};

} // namespace NS

/// This backend's own functions: whatever Apple's frameworks have no name for.
namespace macOS {

using namespace NS;

/// A handle that keeps `object` alive; an absent one for nil.
template <class Handle>
Handle handle(id _Nullable object) {
    return Bridge::handle<Handle>(object);
}

/// The object behind a handle, nil behind an absent one. The caller knows the class: behind a Window is an NSWindow.
template <class Class>
Class* _Null_unspecified object(const Object& handle) {
    return Bridge::object(handle);
}

NSString* toNSString(const std::string& text);
/// Empty for nil.
std::string toString(NSString* _Nullable text);
/// Nothing for nil.
std::optional<std::string> toOptionalString(NSString* _Nullable text);

NSData* toNSData(const std::string& bytes);
/// Empty for nil.
std::string toBytes(NSData* _Nullable data);

/// Nil for `PropertyListValue::Other`, which stands for no object in particular; inside an array or dictionary it is
/// left out.
id _Nullable toPropertyList(const PropertyListValue& value);
NSDictionary<NSString*, id>* toNSDictionary(const Dictionary& dictionary);
PropertyListValue toValue(id _Nullable propertyList);
Dictionary toDictionary(NSDictionary* _Nullable dictionary); // empty for nil

template <class Function>
void forEach(NSArray* array, const Function& function) {
    const NSUInteger count = [array count];
    for (NSUInteger index = 0; index < count; ++index) {
        function([array objectAtIndex:index]);
    }
}

NSArray<NSString*>* toNSArray(const std::vector<std::string>& texts);

template <class Handle>
NSArray* toNSArray(const std::vector<Handle>& handles) {
    NSMutableArray* array = [NSMutableArray arrayWithCapacity:handles.size()];
    for (const Handle& handle : handles) {
        [array addObject:Bridge::object(handle)];
    }
    return array;
}

template <class Handle>
std::vector<Handle> toHandles(NSArray* array) {
    std::vector<Handle> handles;
    forEach(array, [&](id object) { handles.push_back(Bridge::handle<Handle>(object)); });
    return handles;
}

// With their namespace: Carbon has these three names too.
inline NSPoint toNSPoint(const NS::Point& point) {
    return {point.x, point.y};
}

inline NSSize toNSSize(const NS::Size& size) {
    return {size.width, size.height};
}

inline NS::Size toSize(NSSize size) {
    return {size.width, size.height};
}

inline NSRect toNSRect(const NS::Rect& rect) {
    return {toNSPoint(rect.origin), toNSSize(rect.size)};
}

inline NS::Rect toRect(NSRect rect) {
    return {{rect.origin.x, rect.origin.y}, toSize(rect.size)};
}

inline NSDate* toNSDate(const Date& date) {
    return [NSDate dateWithTimeIntervalSince1970:date.timeIntervalSince1970()];
}

inline Date toDate(NSDate* date) {
    return Date::dateWithTimeIntervalSince1970([date timeIntervalSince1970]);
}

Notification toNotification(NSNotification* notification);
Error toError(NSError* _Nullable error);

/// The border from Objective-C into C++: every callback of a framework comes in through here. An exception of either
/// language ends the process here, since neither may unwind the other's frames. What the callback autoreleases goes
/// when it returns, also on threads whose pools nobody drains.
template <class Function, class... Arguments>
auto enter(const Function& function, Arguments&&... arguments) noexcept {
    @autoreleasepool {
        return function(std::forward<Arguments>(arguments)...);
    }
}

/// The same for a control's action, without a pool: the action may let go of the control's own window, which AppKit
/// goes on using until it drains its pool of that event.
template <class Function>
void enterAction(const Function& function) noexcept {
    function();
}

} // namespace macOS

#pragma clang assume_nonnull end
