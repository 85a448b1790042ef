#include "Platform/Foundation/URL.h"

#include "Platform/Linux/Foundation/URLNative.h"

#include <QByteArray>
#include <QString>
#include <QUrl>
#include <algorithm>
#include <filesystem>
#include <memory>
#include <string_view>
#include <utility>

namespace Linux {

namespace {

constexpr std::string_view inName = "-._~!$&'()*+,;=";
constexpr std::string_view inUser = "-._~!$&'()*+,;=:";
constexpr std::string_view inPath = "-._~!$&'()*+,;=:@/";
constexpr std::string_view inQuery = "-._~!$&'()*+,;=:@/?";

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isAllowed(char c, std::string_view punctuation) {
    return isLetter(c) || isDigit(c) || punctuation.find(c) != punctuation.npos;
}

int hexadecimalDigit(char c) {
    if (isDigit(c)) {
        return c - '0';
    }
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// The byte that the text starts with as "%41" does; -1 when it does not.
int encodedByte(std::string_view text) {
    if (text.size() < 3 || text[0] != '%') {
        return -1;
    }
    const int high = hexadecimalDigit(text[1]);
    const int low = hexadecimalDigit(text[2]);
    return high < 0 || low < 0 ? -1 : high * 16 + low;
}

std::string encoded(char c) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    const auto byte = static_cast<unsigned char>(c);
    return {'%', digits[byte >> 4], digits[byte & 0xF]};
}

std::string percentEncoded(std::string_view text, std::string_view punctuation) {
    std::string result;
    for (const char c : text) {
        result += isAllowed(c, punctuation) ? std::string(1, c) : encoded(c);
    }
    return result;
}

/// Encodes what is not encoded yet.
std::string completelyEncoded(std::string_view text, std::string_view punctuation) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool stays = isAllowed(text[i], punctuation) || encodedByte(text.substr(i)) >= 0;
        result += stays ? std::string(1, text[i]) : encoded(text[i]);
    }
    return result;
}

/// As the file system takes it: there a slash and a zero would mean something else, and stay encoded.
std::string percentDecoded(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const int byte = encodedByte(text.substr(i));
        if (byte > 0 && byte != '/') {
            result += static_cast<char>(byte);
            i += 2;
        } else {
            result += text[i];
        }
    }
    return result;
}

std::string_view withoutTrailingSlashes(std::string_view path) {
    const auto last = path.find_last_not_of('/');
    return last == path.npos ? path.substr(0, 1) : path.substr(0, last + 1);
}

/// What stands in front of the first of `ends`, and takes it off the text. Absent without one.
std::optional<std::string_view> takeUntil(std::string_view& text, char end) {
    const auto at = text.find(end);
    if (at == text.npos) {
        return std::nullopt;
    }
    const auto result = text.substr(0, at);
    text.remove_prefix(at + 1);
    return result;
}

bool isScheme(std::string_view text) {
    return text.empty() ||
           (isLetter(text.front()) && std::ranges::all_of(text, [](char c) { return isAllowed(c, "+-."); }));
}

bool isPort(std::string_view text) {
    return std::ranges::all_of(text, isDigit);
}

bool isAddressLiteral(std::string_view text) {
    return text.size() > 2 && text.front() == '[' && text.back() == ']' &&
           completelyEncoded(text.substr(1, text.size() - 2), inUser) == text.substr(1, text.size() - 2);
}

/// A name in other letters than ASCII's takes the form that name servers know. Absent when the text names no host.
std::optional<std::string> hostOf(std::string_view text) {
    if (completelyEncoded(text, inName) == text || isAddressLiteral(text)) {
        return std::string(text);
    }
    const auto ascii = QUrl::toAce(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())));
    return ascii.isEmpty() ? std::nullopt : std::optional(ascii.toStdString());
}

/// Where a host ends that may have a port behind it: a colon within brackets is part of an address.
std::size_t endOfHost(std::string_view text) {
    return text.starts_with('[') ? text.find(':', std::min(text.find(']'), text.size())) : text.find(':');
}

std::optional<std::string> authorityOf(std::string_view text) {
    std::string result;
    if (const auto user = takeUntil(text, '@')) {
        result = completelyEncoded(*user, inUser) + "@";
    }
    const auto end = std::min(endOfHost(text), text.size());
    const auto host = hostOf(text.substr(0, end));
    if (!host || (end < text.size() && !isPort(text.substr(end + 1)))) {
        return std::nullopt;
    }
    return result + *host + std::string(text.substr(end));
}

std::optional<URLParts> partsOf(std::string_view text) {
    if (text.empty()) {
        return std::nullopt;
    }
    URLParts parts;
    if (const auto at = text.find('#'); at != text.npos) {
        parts.fragment = completelyEncoded(text.substr(at + 1), inQuery);
        text = text.substr(0, at);
    }
    if (const auto at = text.find('?'); at != text.npos) {
        parts.query = completelyEncoded(text.substr(at + 1), inQuery);
        text = text.substr(0, at);
    }
    if (const auto at = text.find_first_of(":/"); at != text.npos && text[at] == ':') {
        parts.scheme = text.substr(0, at);
        text.remove_prefix(at + 1);
        if (!isScheme(*parts.scheme)) {
            return std::nullopt;
        }
    }
    if (text.starts_with("//")) {
        text.remove_prefix(2);
        const auto end = std::min(text.find('/'), text.size());
        parts.authority = authorityOf(text.substr(0, end));
        text.remove_prefix(end);
        if (!parts.authority) {
            return std::nullopt;
        }
    }
    parts.path = completelyEncoded(text, inPath);
    return parts;
}

/// What a component is put behind.
std::string folderOf(const URLParts& parts) {
    if (parts.path.empty() && !parts.authority) {
        return parts.scheme ? "" : "./"; // else a component with a colon would start with a scheme
    }
    return parts.path.ends_with('/') ? parts.path : parts.path + "/";
}

URL makeURL(URLParts parts) {
    return handle<URL>(std::make_shared<URLNative>(std::move(parts)));
}

const URLParts& partsOf(const URL& url) {
    return native(url).parts;
}

} // namespace

std::string URLParts::text() const {
    return (scheme ? *scheme + ":" : "") + (authority ? "//" + *authority : "") + path + (query ? "?" + *query : "") +
           (fragment ? "#" + *fragment : "");
}

std::string URLParts::host() const {
    const auto name = authority.value_or("");
    const auto behindUser = name.substr(name.find('@') + 1);
    return behindUser.substr(0, endOfHost(behindUser));
}

URLNative::URLNative(URLParts urlParts) : parts(std::move(urlParts)) {}

} // namespace Linux

namespace NS {

using namespace Linux;

URL URL::URLWithString(const std::string& text) {
    auto parts = partsOf(std::string_view(text));
    return parts ? makeURL(std::move(*parts)) : URL();
}

URL URL::fileURLWithPath(const std::string& path) {
    const auto absolute = path.starts_with('/') ? path : (std::filesystem::current_path() / path).string();
    return makeURL({"file", "", percentEncoded(withoutTrailingSlashes(absolute), inPath), {}, {}});
}

std::string URL::absoluteString() const {
    return partsOf(*this).text();
}

std::optional<std::string> URL::scheme() const {
    return partsOf(*this).scheme;
}

std::string URL::path() const {
    return percentDecoded(withoutTrailingSlashes(partsOf(*this).path));
}

std::string URL::pathExtension() const {
    const auto path = this->path();
    const auto name = path.substr(path.find_last_of('/') + 1);
    const auto dot = name.find_last_of('.');
    if (dot == name.npos || dot == 0) {
        return "";
    }
    const auto extension = name.substr(dot + 1);
    return extension.find(' ') == extension.npos ? extension : "";
}

URL URL::URLByAppendingPathComponent(const std::string& component) const {
    auto parts = partsOf(*this);
    const std::string_view added = component;
    parts.path = folderOf(parts) + percentEncoded(added.substr(added.starts_with('/')), inPath);
    if (!parts.authority && parts.path.starts_with("//")) {
        parts.path.insert(0, "/."); // or its first name would become the host
    }
    return makeURL(std::move(parts));
}

URL URL::URLByDeletingLastPathComponent() const {
    auto parts = partsOf(*this);
    const auto path = withoutTrailingSlashes(parts.path);
    parts.path = path.substr(0, path.find_last_of('/') + 1);
    return makeURL(std::move(parts));
}

} // namespace NS
