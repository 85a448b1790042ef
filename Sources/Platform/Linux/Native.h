#pragma once

#include "Platform/Foundation/Object.h"

#include <memory>
#include <utility>

namespace NS {

/// The root of everything that stands behind a handle here.
struct Native {
    Native() = default;
    virtual ~Native() = default;
    Native(const Native&) = delete;
    Native& operator=(const Native&) = delete;
};

/// Between handles and what stands behind them. The caller knows the type: a Window has a WindowNative behind it.
struct Bridge {
    template <class Handle>
    static Handle handle(std::shared_ptr<Native> native) {
        Handle result;
        static_cast<Object&>(result).native_ = std::move(native);
        return result;
    }

    template <class N>
    static N& native(const Object& object) {
        return static_cast<N&>(*object.native_);
    }

    template <class N>
    static std::shared_ptr<N> shared(const Object& object) {
        return std::static_pointer_cast<N>(object.native_);
    }
};

} // namespace NS
