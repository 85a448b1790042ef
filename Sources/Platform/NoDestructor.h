#pragma once

#include <utility>

/// A static variable that is never destroyed: threads and handles may use it while the process ends.
template <class T>
class NoDestructor {
public:
    NoDestructor() : value_() {}
    template <class... Arguments>
    explicit NoDestructor(Arguments&&... arguments) : value_(std::forward<Arguments>(arguments)...) {}
    ~NoDestructor() {} // a union does not destroy its members
    NoDestructor(const NoDestructor&) = delete;
    NoDestructor& operator=(const NoDestructor&) = delete;

    T& operator*() { return value_; }

private:
    union {
        T value_;
    };
};
