#pragma once

#include "Platform/Foundation/URL.h"
#include "Platform/Linux/Native.h"

#include <optional>
#include <string>

namespace Linux {

/// The parts of a URL as RFC 3986 splits it, in which nothing is left to encode. An absent part differs from an empty
/// one: "//" and "?" belong to the part behind them.
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
    explicit URLNative(URLParts urlParts);

    const URLParts parts;
};

template <>
struct NativeOf<URL> : std::type_identity<URLNative> {};

} // namespace Linux
