#pragma once

#include <memory>
#include <utility>

namespace NS {

/// What stands behind a handle: each backend decides (an Objective-C object, a C++ object around a Qt one).
struct Native;

/// The root of every handle. A handle is a small value that shares one native object: copying it shares
/// the object, as copying a reference does, and a default-constructed handle is "absent". Calling anything
/// but `bool` and `==` on an absent handle is a programming error.
///
/// Handles belong to the main thread unless their class says otherwise.
class Object {
public:
    Object() = default;

    /// Whether there is an object behind this handle.
    explicit operator bool() const { return native_ != nullptr; }

    /// Identity: both handles share one native object (or both are absent).
    friend bool operator==(const Object& a, const Object& b) { return a.native_ == b.native_; }

protected:
    explicit Object(std::shared_ptr<Native> native) : native_(std::move(native)) {}

private:
    friend struct Bridge; // the backend's way in
    std::shared_ptr<Native> native_;
};

} // namespace NS
