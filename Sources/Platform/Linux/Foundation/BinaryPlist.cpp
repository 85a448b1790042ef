#include "Platform/Linux/Foundation/BinaryPlist.h"

#include <algorithm>

namespace Linux {

BinaryPlist::BinaryPlist(std::string_view bytes) : bytes_(bytes) {
    constexpr std::size_t trailer = 32;
    const std::size_t end = std::max(bytes.size(), trailer) - trailer;
    offsetSize_ = number(end + 6, 1);
    referenceSize_ = number(end + 7, 1);
    top_ = number(end + 16, 8);
    offsets_ = number(end + 24, 8);
}

BinaryPlist::Object BinaryPlist::object(std::uint64_t index) const {
    std::uint64_t at = number(offsets_ + index * offsetSize_, offsetSize_);
    const std::uint64_t marker = number(at++, 1);
    std::uint64_t count = marker & 0xF;
    const std::uint64_t kind = marker >> 4;
    if (count == 0xF && kind >= Data && kind != UID) { // too many for four bits: an integer object follows
        const std::uint64_t size = std::uint64_t{1} << (number(at++, 1) & 0xF);
        count = number(at, size);
        at += size;
    }
    return {kind, count, at};
}

std::uint64_t BinaryPlist::reference(const Object& container, std::uint64_t index) const {
    return number(container.at + index * referenceSize_, referenceSize_);
}

std::optional<std::string_view> BinaryPlist::content(const Object& object) const {
    const std::uint64_t width = object.kind == UTF16 ? 2 : 1;
    if (object.at > bytes_.size() || object.count > (bytes_.size() - object.at) / width) {
        return std::nullopt;
    }
    return bytes_.substr(object.at, object.count * width);
}

/// The big-endian number there.
std::uint64_t BinaryPlist::number(std::uint64_t at, std::uint64_t size) const {
    if (at > bytes_.size() || size > bytes_.size() - at) {
        return 0;
    }
    std::uint64_t result = 0;
    for (const char byte : bytes_.substr(at, size)) {
        result = result << 8 | static_cast<unsigned char>(byte);
    }
    return result;
}

} // namespace Linux
