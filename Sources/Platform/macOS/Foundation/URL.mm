#include "Platform/Foundation/URL.h"

#include "Platform/macOS/Conversions.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace macOS {

namespace {

bool isLegal(std::string_view rest) {
    constexpr std::string_view legal =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._~:/?#[]@!$&'()*+,;=";
    constexpr std::string_view hexadecimal = "0123456789abcdefABCDEF";
    const bool isEscape = rest.size() > 2 && rest[0] == '%' && hexadecimal.find(rest[1]) != hexadecimal.npos &&
                          hexadecimal.find(rest[2]) != hexadecimal.npos;
    return isEscape || legal.find(rest[0]) != legal.npos;
}

/// `text` with everything behind the host encoded that a URL cannot hold.
std::string percentEncoded(const std::string& text) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    const auto authority = text.find("://");
    const auto path = authority == text.npos ? 0 : std::min(text.find_first_of("/?#", authority + 3), text.size());
    std::string encoded = text.substr(0, path);
    for (std::string_view rest = std::string_view(text).substr(path); !rest.empty(); rest.remove_prefix(1)) {
        const auto byte = static_cast<unsigned char>(rest[0]);
        encoded += isLegal(rest) ? std::string(1, rest[0]) : std::string{'%', digits[byte / 16], digits[byte % 16]};
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

URL URL::URLByResolvingSymlinksInPath() const {
    return handle<URL>([object<NSURL>(*this) URLByResolvingSymlinksInPath]);
}

} // namespace NS
