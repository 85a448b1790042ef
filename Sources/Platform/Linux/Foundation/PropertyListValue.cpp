#include "Platform/Foundation/PropertyListValue.h"

#include "Platform/Linux/Foundation/BinaryPlist.h"
#include "Platform/Linux/Foundation/Files.h"
#include "Platform/Linux/Native.h"

#include <QByteArray>
#include <QStringConverter>
#include <QXmlStreamReader>
#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

// The texts that somebody wants of a property list that may come from anywhere. Not libplist, which makes a tree of all
// there is: of a few bytes that can be gigabytes, and it calls itself once for each level.

namespace Linux {

namespace {

// An image may hold a file of any length that is all zeros.
constexpr std::size_t maxPropertyListSize = std::size_t{64} << 20; // bytes
constexpr int maxElementNesting = 512;

bool contains(const std::vector<std::string>& wanted, std::string_view key) {
    return std::ranges::find(wanted, key) != wanted.end();
}

/// Passes over the element that has begun, and says whether it can be in a property list.
bool skipElement(QXmlStreamReader& xml) {
    constexpr std::array names = {u"dict", u"key",  u"array", u"string", u"integer",
                                  u"real", u"true", u"false", u"data",   u"date"};
    for (int nesting = 1; nesting > 0;) {
        if (xml.isStartElement() && std::ranges::none_of(names, [&](const auto* name) { return xml.name() == name; })) {
            return false;
        }
        const auto token = xml.readNext();
        nesting += token == QXmlStreamReader::StartElement ? 1 : token == QXmlStreamReader::EndElement ? -1 : 0;
        if (xml.hasError() || xml.isEntityReference() || nesting > maxElementNesting) {
            return false;
        }
    }
    return true;
}

/// Reads the key and the value that follow in a dictionary.
bool readXMLEntry(QXmlStreamReader& xml, const std::vector<std::string>& wanted, Dictionary& result) {
    if (xml.name() != u"key") {
        return false;
    }
    const auto key = xml.readElementText().toStdString();
    if (!xml.readNextStartElement()) {
        return false;
    }
    if (!contains(wanted, key)) {
        return skipElement(xml);
    }
    if (xml.name() != u"string") {
        result.insert_or_assign(key, PropertyListValue());
        return skipElement(xml);
    }
    result.insert_or_assign(key, xml.readElementText().toStdString());
    return !xml.hasError();
}

std::optional<Dictionary> readXML(const std::string& bytes, const std::vector<std::string>& wanted) {
    QXmlStreamReader xml(QByteArray::fromRawData(bytes.data(), static_cast<qsizetype>(bytes.size())));
    const bool isPropertyList = xml.readNextStartElement() && xml.name() == u"plist";
    if (!isPropertyList || !xml.readNextStartElement() || xml.name() != u"dict") {
        return std::nullopt;
    }
    Dictionary result;
    while (xml.readNextStartElement()) {
        if (!readXMLEntry(xml, wanted, result)) {
            return std::nullopt;
        }
    }
    while (!xml.atEnd()) {
        xml.readNext();
    }
    return xml.hasError() ? std::nullopt : std::optional(std::move(result));
}

PropertyListValue valueOfText(const BinaryPlist& plist, const BinaryPlist::Object& object) {
    const auto content = plist.content(object);
    if (content && object.kind == BinaryPlist::ASCII) {
        return std::string(*content);
    }
    if (content && object.kind == BinaryPlist::UTF16) {
        QStringDecoder decoder(QStringConverter::Utf16BE);
        const QString text = decoder.decode(QByteArrayView(*content));
        return text.toStdString();
    }
    return {};
}

std::optional<Dictionary> readBinary(const std::string& bytes, const std::vector<std::string>& wanted) {
    const BinaryPlist plist(bytes);
    const auto top = plist.top();
    if (top.kind != BinaryPlist::Dictionary || top.count > bytes.size()) {
        return std::nullopt;
    }
    Dictionary result;
    for (std::uint64_t index = 0; index < top.count; ++index) {
        const auto key = plist.object(plist.reference(top, index));
        const auto text = plist.content(key);
        const bool isText = key.kind == BinaryPlist::ASCII || key.kind == BinaryPlist::UTF16;
        if (!isText || !text) {
            return std::nullopt;
        }
        if (key.kind == BinaryPlist::ASCII && contains(wanted, *text)) { // as keys are stored wherever they can be
            result.insert_or_assign(std::string(*text),
                                    valueOfText(plist, plist.object(plist.reference(top, top.count + index))));
        }
    }
    return result;
}

} // namespace

} // namespace Linux

namespace NS {

using namespace Linux;

std::optional<Dictionary> dictionaryWithContentsOfURL(const URL& url, const std::vector<std::string>& wanted) {
    std::string bytes;
    if (readFile(url.path(), bytes, maxPropertyListSize)) {
        return std::nullopt;
    }
    return BinaryPlist::isOne(bytes) ? readBinary(bytes, wanted) : readXML(bytes, wanted);
}

} // namespace NS
