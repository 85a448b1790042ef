#pragma once

#include "Platform/Foundation/URL.h"
#include "Platform/Linux/Native.h"

#include <optional>
#include <string>
#include <utility>

namespace Linux {

/// The components of a URL, with nothing left to encode. An absent component differs from an empty one: "//" and "?"
/// belong to the component behind them.
struct URLParts {
    std::optional<std::string> scheme;
    std::optional<std::string> authority;
    std::string path;
    std::optional<std::string> query;
    std::optional<std::string> fragment;

    std::string text() const;
    /// Without user and port; "" when there is none.
    std::string host() const;
};

struct URLNative : Native {
    explicit URLNative(URLParts parts) : parts(std::move(parts)) {}

    const URLParts parts;
};

template <>
struct NativeOf<URL> : std::type_identity<URLNative> {};

} // namespace Linux
