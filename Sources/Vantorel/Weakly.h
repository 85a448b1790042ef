#pragma once

#include <memory>
#include <utility>

/// A closure that calls a method without parameters of an object, as long as the object lives. It takes any arguments
/// and ignores them.
template <class Class>
auto weakly(std::weak_ptr<Class> object, void (Class::*method)()) {
    return [object = std::move(object), method](const auto&...) {
        if (const auto self = object.lock()) {
            (self.get()->*method)();
        }
    };
}
