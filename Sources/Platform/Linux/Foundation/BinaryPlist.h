#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace Linux {

/// A look at the objects of a binary property list, one by one. Every number in the file may be wrong: what lies
/// outside of it reads as 0. https://opensource.apple.com/source/CF/CF-1153.18/CFBinaryPList.c
class BinaryPlist {
public:
    enum Kind : std::uint64_t {
        Data = 0x4,
        ASCII = 0x5,
        UTF16 = 0x6,
        UID = 0x8,
        Array = 0xA,
        Set = 0xC,
        Dictionary = 0xD
    };

    struct Object {
        std::uint64_t kind;  // below Data are numbers, dates and the like
        std::uint64_t count; // of what it holds: bytes, characters, items, pairs
        std::uint64_t at;    // where that begins in the file
    };

    static bool isOne(std::string_view bytes) { return bytes.starts_with("bplist"); }

    explicit BinaryPlist(std::string_view bytes);

    Object top() const { return object(top_); }
    Object object(std::uint64_t index) const;
    /// Which object an array or dictionary refers to, in its list of references.
    std::uint64_t reference(const Object& container, std::uint64_t index) const;
    /// The bytes of data or of a text; nothing when they are not all there.
    std::optional<std::string_view> content(const Object& object) const;

private:
    std::uint64_t number(std::uint64_t at, std::uint64_t size) const;

    std::string_view bytes_;
    std::uint64_t offsetSize_ = 0;
    std::uint64_t referenceSize_ = 0;
    std::uint64_t top_ = 0;
    std::uint64_t offsets_ = 0;
};

} // namespace Linux
