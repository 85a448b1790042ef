#pragma once

#include <type_traits>

namespace NS {

/// Whether the values of an enumeration are bits to be combined (NS_OPTIONS).
template <class Enum>
inline constexpr bool isFlags = false;

template <class Enum>
    requires isFlags<Enum>
constexpr Enum operator|(Enum a, Enum b) {
    using Bits = std::underlying_type_t<Enum>;
    return static_cast<Enum>(static_cast<Bits>(a) | static_cast<Bits>(b));
}

template <class Enum>
    requires isFlags<Enum>
constexpr bool contains(Enum flags, Enum flag) {
    using Bits = std::underlying_type_t<Enum>;
    return (static_cast<Bits>(flags) & static_cast<Bits>(flag)) != 0;
}

} // namespace NS
