#include "Platform/Foundation/URL.h"

#include "Platform/macOS/Conversions.h"

#include <algorithm>
#include <string_view>

namespace macOS {

namespace {

/// `text` with everything behind the host encoded that a URL cannot hold.
std::string percentEncoded(const std::string& text) {
    constexpr std::string_view legal =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~:/?#[]@!$&'()*+,;=%";
    const auto authority = text.find("://");
    const auto path = authority == text.npos ? 0 : std::min(text.find_first_of("/?#", authority + 3), text.size());
    std::string encoded = text.substr(0, path);
    for (const char byte : std::string_view(text).substr(path)) {
        if (legal.find(byte) != legal.npos) {
            encoded += byte;
        } else {
            constexpr char digits[] = "0123456789ABCDEF";
            const auto value = static_cast<unsigned char>(byte);
            encoded += {'%', digits[value / 16], digits[value % 16]};
        }
    }
    return encoded;
}

} // namespace

} // namespace macOS

namespace NS {

using namespace macOS;

URL URL::URLWithString(const std::string& text) {
    if (NSURL* url = [NSURL URLWithString:toNSString(text)]) {
        return handle<URL>(url);
    }
    return handle<URL>([NSURL URLWithString:toNSString(percentEncoded(text))]); // macOS 13 leaves that to its callers
}

URL URL::fileURLWithPath(const std::string& path) {
    return handle<URL>([NSURL fileURLWithPath:toNSString(path)]);
}

std::string URL::absoluteString() const {
    return toString([object<NSURL>(*this) absoluteString]);
}

std::optional<std::string> URL::scheme() const {
    return toOptionalString([object<NSURL>(*this) scheme]);
}

std::string URL::path() const {
    return toString([object<NSURL>(*this) path]);
}

std::string URL::pathExtension() const {
    return toString([object<NSURL>(*this) pathExtension]);
}

URL URL::URLByAppendingPathComponent(const std::string& component) const {
    return handle<URL>([object<NSURL>(*this) URLByAppendingPathComponent:toNSString(component)]);
}

URL URL::URLByDeletingLastPathComponent() const {
    return handle<URL>([object<NSURL>(*this) URLByDeletingLastPathComponent]);
}

} // namespace NS
