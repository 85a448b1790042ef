#include "Platform/Foundation/URL.h"

#include "Platform/macOS/Conversions.h"

namespace NS {

using namespace macOS;

URL URL::URLWithString(const std::string& text) {
    return handle<URL>([NSURL URLWithString:toNSString(text)]);
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
