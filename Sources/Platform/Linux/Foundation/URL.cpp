#include "Platform/Foundation/URL.h"

#include "Platform/Linux/Foundation/URLNative.h"
#include "Platform/NoDestructor.h"

#include <QByteArray>
#include <QRegularExpression>
#include <QUrl>
#include <filesystem>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>

// URLs by RFC 3986 (https://www.rfc-editor.org/rfc/rfc3986), as Foundation has them. Qt codes the characters, and its
// regular expressions split the text. Not QUrl: it lowers the letters of schemes and hosts, decodes "%41", and refuses
// ports above 65535, hosts like "-h.example" and "://x", all of which Foundation keeps.

namespace Linux {

namespace {

// The punctuation that needs no encoding, but for "-._~", which Qt never encodes.
constexpr char inName[] = "!$&'()*+,;=";
constexpr char inUser[] = "!$&'()*+,;=:";
constexpr char inPath[] = "!$&'()*+,;=:@/";
constexpr char inQuery[] = "!$&'()*+,;=:@/?";

/// A character for each byte, so that bytes that are not UTF-8 pass through.
QString characters(std::string_view bytes) {
    return QString::fromLatin1(bytes.data(), static_cast<qsizetype>(bytes.size()));
}

std::string percentEncoded(std::string_view text, const char* punctuation) {
    const QByteArray bytes(text.data(), static_cast<qsizetype>(text.size()));
    return bytes.toPercentEncoding(punctuation).toStdString();
}

/// Encodes all that needs it and is not encoded yet.
std::string completelyEncoded(const QString& text, const char* punctuation) {
    static NoDestructor<QRegularExpression> encodedTwice(QStringLiteral("%25([0-9A-Fa-f]{2})"));
    QString encoded = QString::fromLatin1(text.toLatin1().toPercentEncoding(punctuation));
    return encoded.replace(*encodedTwice, QStringLiteral("%\\1")).toStdString();
}

/// As a path of the file system, where a slash and a zero have a meaning: these stay encoded.
std::string percentDecoded(std::string_view text) {
    static NoDestructor<QRegularExpression> kept(QStringLiteral("%(2[Ff]|00)"));
    const QString protectedText = characters(text).replace(*kept, QStringLiteral("%25\\1"));
    return QByteArray::fromPercentEncoding(protectedText.toLatin1()).toStdString();
}

std::string_view withoutTrailingSlashes(std::string_view path) {
    const auto last = path.find_last_not_of('/');
    return last == path.npos ? path.substr(0, 1) : path.substr(0, last + 1);
}

/// A host name that is not ASCII becomes its ASCII form (IDNA). Absent when the text is not a host.
std::optional<std::string> hostOf(const QString& text) {
    const bool isLiteral = text.size() > 2 && text.startsWith('[') && text.endsWith(']');
    const QString inside = isLiteral ? text.sliced(1, text.size() - 2) : text;
    if (completelyEncoded(inside, isLiteral ? inUser : inName) == inside.toStdString()) {
        return text.toStdString();
    }
    const auto ascii = QUrl::toAce(QString::fromUtf8(text.toLatin1()));
    return ascii.isEmpty() ? std::nullopt : std::optional(ascii.toStdString());
}

/// User, host, and port with its colon: a colon within brackets is part of an address.
QRegularExpressionMatch authorityMatch(const QString& text) {
    static NoDestructor<QRegularExpression> form(QStringLiteral(R"(\A(?:([^@]*)@)?+(\[[^\]]*\]|[^:]*)(:[0-9]*)?\z)"));
    return (*form).match(text);
}

std::optional<std::string> authorityOf(const QString& text) {
    const auto match = authorityMatch(text);
    const auto host = match.hasMatch() ? hostOf(match.captured(2)) : std::nullopt;
    if (!host) {
        return std::nullopt;
    }
    const auto user = match.hasCaptured(1) ? completelyEncoded(match.captured(1), inUser) + "@" : "";
    return user + *host + match.captured(3).toStdString();
}

/// Splits as appendix B of RFC 3986 does, where the scheme may be empty.
std::optional<URLParts> parsed(std::string_view text) {
    static NoDestructor<QRegularExpression> form(
        QStringLiteral(R"(\A(?:([^:/?#]*):)?(?://([^/?#]*))?([^?#]*)(?:\?([^#]*))?(?:#(.*))?\z)"),
        QRegularExpression::DotMatchesEverythingOption);
    static NoDestructor<QRegularExpression> scheme(QStringLiteral(R"(\A(?:[A-Za-z][A-Za-z0-9+.-]*)?\z)"));
    const auto match = (*form).match(characters(text));
    if (text.empty() || !(*scheme).match(match.captured(1)).hasMatch()) {
        return std::nullopt;
    }
    URLParts parts;
    parts.path = completelyEncoded(match.captured(3), inPath);
    if (match.hasCaptured(1)) {
        parts.scheme = match.captured(1).toStdString();
    }
    if (match.hasCaptured(2)) {
        parts.authority = authorityOf(match.captured(2));
        if (!parts.authority) {
            return std::nullopt;
        }
    }
    if (match.hasCaptured(4)) {
        parts.query = completelyEncoded(match.captured(4), inQuery);
    }
    if (match.hasCaptured(5)) {
        parts.fragment = completelyEncoded(match.captured(5), inQuery);
    }
    return parts;
}

/// The path that a component is put behind.
std::string folderOf(const URLParts& parts) {
    if (parts.path.empty() && !parts.authority) {
        return parts.scheme ? "" : "./"; // else a component with a colon would start with a scheme
    }
    return parts.path.ends_with('/') ? parts.path : parts.path + "/";
}

URL makeURL(URLParts parts) {
    return handle<URL>(std::make_shared<URLNative>(std::move(parts)));
}

} // namespace

std::string URLParts::text() const {
    return (scheme ? *scheme + ":" : "") + (authority ? "//" + *authority : "") + path + (query ? "?" + *query : "") +
           (fragment ? "#" + *fragment : "");
}

std::string URLParts::host() const {
    return authorityMatch(characters(authority.value_or(""))).captured(2).toStdString();
}

} // namespace Linux

namespace NS {

using namespace Linux;

URL URL::URLWithString(const std::string& text) {
    auto parts = parsed(text);
    return parts ? makeURL(std::move(*parts)) : URL();
}

URL URL::fileURLWithPath(const std::string& path) {
    const auto absolute = path.starts_with('/') ? path : (std::filesystem::current_path() / path).string();
    return makeURL({"file", "", percentEncoded(withoutTrailingSlashes(absolute), inPath), {}, {}});
}

std::string URL::absoluteString() const {
    return native(*this).parts.text();
}

std::optional<std::string> URL::scheme() const {
    return native(*this).parts.scheme;
}

std::string URL::path() const {
    return percentDecoded(withoutTrailingSlashes(native(*this).parts.path));
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
    auto parts = native(*this).parts;
    const std::string_view added = component;
    parts.path = folderOf(parts) + percentEncoded(added.substr(added.starts_with('/')), inPath);
    if (!parts.authority && parts.path.starts_with("//")) {
        parts.path.insert(0, "/."); // or its first name would become the host
    }
    return makeURL(std::move(parts));
}

URL URL::URLByDeletingLastPathComponent() const {
    auto parts = native(*this).parts;
    const auto path = withoutTrailingSlashes(parts.path);
    parts.path = path.substr(0, path.find_last_of('/') + 1);
    return makeURL(std::move(parts));
}

URL URL::URLByResolvingSymlinksInPath() const {
    std::error_code error;
    const auto resolved = std::filesystem::canonical(path(), error);
    return error ? *this : fileURLWithPath(resolved.string());
}

} // namespace NS
