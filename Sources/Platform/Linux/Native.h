#pragma once

#include "Platform/Foundation/Object.h"

#include <cassert>
#include <memory>
#include <type_traits>
#include <utility>

namespace NS {

/// The root of everything that stands behind a handle here.
struct Native {
    Native() = default;
    virtual ~Native() = default;
    Native(const Native&) = delete;
    Native& operator=(const Native&) = delete;
};

/// The way into a handle.
struct Bridge {
    template <class Handle>
    static Handle handle(std::shared_ptr<Native> native) {
        Handle result;
        static_cast<Object&>(result).native_ = std::move(native);
        return result;
    }

    static const std::shared_ptr<Native>& object(const Object& handle) { return handle.native_; }
};

} // namespace NS

/// This backend's own types and functions: whatever Apple's frameworks have no name for.
namespace Linux {

using namespace NS;

/// The type of the object behind a handle: behind a View is a ViewNative.
template <class Handle>
struct NativeOf;

/// A handle that shares `object`; an absent one for null.
template <class Handle>
Handle handle(std::shared_ptr<Native> object) {
    return Bridge::handle<Handle>(std::move(object));
}

/// The object behind a handle that is not absent, by a type that the caller knows.
template <class Class>
Class& object(const Object& handle) {
    assert(handle);
    return static_cast<Class&>(*Bridge::object(handle));
}

/// The same, null behind an absent handle.
template <class Class>
std::shared_ptr<Class> sharedObject(const Object& handle) {
    return std::static_pointer_cast<Class>(Bridge::object(handle));
}

template <class Handle>
auto& native(const Handle& handle) {
    return object<typename NativeOf<Handle>::type>(handle);
}

template <class Handle>
auto shared(const Handle& handle) {
    return sharedObject<typename NativeOf<Handle>::type>(handle);
}

} // namespace Linux
