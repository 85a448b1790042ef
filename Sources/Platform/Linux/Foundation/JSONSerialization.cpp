#include "Platform/Foundation/JSONSerialization.h"

#include "Platform/Linux/Native.h"

#include <QByteArrayView>
#include <QString>
#include <QStringConverter>
#include <QStringView>
#include <algorithm>
#include <charconv>
#include <cstdint>
#include <span>
#include <string_view>
#include <utility>

// A reader that keeps only what is wanted (https://www.rfc-editor.org/rfc/rfc8259): a document may be of any size. Not
// nlohmann-json, which the tests compare it with: that keeps every token while it reads it, and ends at a number that
// no double can hold. Not QJsonDocument, which ends there too, and keeps everything.

namespace Linux {

namespace {

constexpr int maxNesting = 512; // as NSJSONSerialization

/// Which values to keep: all, or those at the end of key paths and on the way there.
class Selection {
public:
    static Selection all() { return Selection(true); }
    static Selection none() { return Selection(false); }
    static Selection of(const std::vector<JSONSerialization::KeyPath>& paths) {
        Selection selection(false);
        selection.paths_.assign(paths.begin(), paths.end());
        return selection;
    }

    bool isAll() const { return isAll_; }
    bool isNone() const { return !isAll_ && paths_.empty(); }

    /// Of what the key leads to.
    Selection under(const std::string& key) const {
        Selection inner(isAll_);
        for (const auto& path : paths_) {
            if (!path.empty() && (path.front() == key || path.front() == "*")) {
                inner.paths_.push_back(path.subspan(1));
            }
        }
        return inner;
    }

private:
    explicit Selection(bool isAll) : isAll_(isAll) {}

    bool isAll_;
    std::vector<std::span<const std::string>> paths_;
};

template <class Number>
std::optional<Number> numberOf(std::string_view text) {
    Number number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    return result.ec == std::errc() && result.ptr == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

/// The value of a number; `Other` where no double can hold it.
PropertyListValue valueOfNumber(std::string_view text) {
    if (const auto integer = numberOf<std::int64_t>(text)) {
        return *integer;
    }
    const auto real = numberOf<double>(text);
    return real ? PropertyListValue(*real) : PropertyListValue();
}

/// Reads UTF-8 from its beginning. The methods say whether it is well-formed so far; a value goes where they are told,
/// and nowhere when that is null.
class Reader {
public:
    explicit Reader(std::string_view text) : rest_(text) {}

    bool readDocument(const Selection& selection, PropertyListValue& value) {
        if (!readValue(selection, &value)) {
            return false;
        }
        skipBlanks();
        return rest_.empty();
    }

private:
    bool readValue(const Selection& selection, PropertyListValue* value) {
        skipBlanks();
        switch (rest_.empty() ? '\0' : rest_.front()) {
        case '{':
            return readObject(selection, value);
        case '[':
            return readArray(selection, value);
        case '"':
            return readString(value);
        case 't':
            return readWord("true", true, value);
        case 'f':
            return readWord("false", false, value);
        case 'n':
            return readWord("null", {}, value);
        default:
            return readNumber(value);
        }
    }

    bool readObject(const Selection& selection, PropertyListValue* value) {
        Dictionary entries;
        const bool keepsSome = value && !selection.isNone();
        std::string key;
        const bool isRead = readItems('}', [&] {
            skipBlanks();
            if (!readText(keepsSome ? &key : nullptr)) {
                return false;
            }
            skipBlanks();
            if (!skip(':')) {
                return false;
            }
            const auto inner = keepsSome ? selection.under(key) : Selection::none();
            if (inner.isNone()) {
                return readValue(inner, nullptr);
            }
            PropertyListValue item;
            const bool isItem = readValue(inner, &item);
            entries.insert_or_assign(std::move(key), std::move(item));
            return isItem;
        });
        if (value) {
            *value = std::move(entries);
        }
        return isRead;
    }

    bool readArray(const Selection& selection, PropertyListValue* value) {
        Array items;
        const bool isRead = readItems(']', [&] {
            if (!value || !selection.isAll()) {
                return readValue(Selection::none(), nullptr);
            }
            PropertyListValue item;
            const bool isItem = readValue(selection, &item);
            items.push_back(std::move(item));
            return isItem;
        });
        if (value) {
            *value = std::move(items);
        }
        return isRead;
    }

    /// What stands between two brackets, up to the closing one.
    template <class ReadItem>
    bool readItems(char end, const ReadItem& readItem) {
        rest_.remove_prefix(1);
        if (++nesting_ > maxNesting) {
            return false;
        }
        skipBlanks();
        if (!skip(end)) {
            do {
                if (!readItem()) {
                    return false;
                }
                skipBlanks();
            } while (skip(','));
            if (!skip(end)) {
                return false;
            }
        }
        --nesting_;
        return true;
    }

    bool readString(PropertyListValue* value) {
        std::string text;
        const bool isRead = readText(value ? &text : nullptr);
        if (value) {
            *value = std::move(text);
        }
        return isRead;
    }

    bool readText(std::string* text) {
        if (!skip('"')) {
            return false;
        }
        if (text) {
            text->clear();
        }
        while (true) {
            const auto* const plain = std::ranges::find_if(
                rest_, [](unsigned char byte) { return byte == '"' || byte == '\\' || byte < 0x20; });
            const auto length = static_cast<std::size_t>(plain - rest_.begin());
            if (text) {
                text->append(rest_.substr(0, length));
            }
            rest_.remove_prefix(length);
            if (skip('"')) {
                return true;
            }
            if (!skip('\\') || !readEscape(text)) {
                return false;
            }
        }
    }

    bool readEscape(std::string* text) {
        constexpr std::string_view letters = "\"\\/bfnrt";
        constexpr std::string_view characters = "\"\\/\b\f\n\r\t";
        if (skip('u')) {
            return readCodePoint(text);
        }
        const auto letter = rest_.empty() ? letters.npos : letters.find(rest_.front());
        if (letter == letters.npos) {
            return false;
        }
        rest_.remove_prefix(1);
        if (text) {
            *text += characters[letter];
        }
        return true;
    }

    /// Characters beyond the first 65536 are written as two halves, which are none alone.
    bool readCodePoint(std::string* text) {
        auto character = readCodeUnit();
        if (!character || QChar::isLowSurrogate(*character)) {
            return false;
        }
        if (QChar::isHighSurrogate(*character)) {
            const auto low = skip('\\') && skip('u') ? readCodeUnit() : std::nullopt;
            if (!low || !QChar::isLowSurrogate(*low)) {
                return false;
            }
            character = QChar::surrogateToUcs4(static_cast<char16_t>(*character), static_cast<char16_t>(*low));
        }
        if (text) {
            *text += QString::fromUcs4(&*character, 1).toStdString();
        }
        return true;
    }

    std::optional<char32_t> readCodeUnit() {
        std::uint32_t unit = 0;
        const char* const start = rest_.data();
        const char* const end = start + std::min<std::size_t>(rest_.size(), 4);
        if (std::from_chars(start, end, unit, 16).ptr != start + 4) {
            return std::nullopt;
        }
        rest_.remove_prefix(4);
        return unit;
    }

    bool readWord(std::string_view word, const PropertyListValue& meaning, PropertyListValue* value) {
        if (!rest_.starts_with(word)) {
            return false;
        }
        rest_.remove_prefix(word.size());
        if (value) {
            *value = meaning;
        }
        return true;
    }

    bool readNumber(PropertyListValue* value) {
        const auto start = rest_;
        skip('-');
        if (!skip('0') && !skipDigits()) {
            return false;
        }
        if (skip('.') && !skipDigits()) {
            return false;
        }
        if (skip('e') || skip('E')) {
            if (!skip('+')) {
                skip('-');
            }
            if (!skipDigits()) {
                return false;
            }
        }
        if (value) {
            *value = valueOfNumber(start.substr(0, start.size() - rest_.size()));
        }
        return true;
    }

    bool skipDigits() {
        const auto length = std::min(rest_.find_first_not_of("0123456789"), rest_.size());
        rest_.remove_prefix(length);
        return length > 0;
    }

    bool skip(char character) {
        const bool isThere = rest_.starts_with(character);
        rest_.remove_prefix(isThere ? 1 : 0);
        return isThere;
    }

    void skipBlanks() {
        const auto isBlank = [](char byte) { return byte == ' ' || byte == '\n' || byte == '\r' || byte == '\t'; };
        const auto* const end = std::ranges::find_if_not(rest_, isBlank);
        rest_.remove_prefix(static_cast<std::size_t>(end - rest_.begin()));
    }

    std::string_view rest_;
    int nesting_ = 0;
};

/// By the byte order mark, or else by the zeros in the first two characters, which are ASCII:
/// https://www.rfc-editor.org/rfc/rfc4627#section-3
QStringConverter::Encoding encodingOf(QByteArrayView data) {
    if (const auto marked = QStringConverter::encodingForData(data)) {
        return *marked;
    }
    const bool isLongEnough = data.size() >= 4;
    if (isLongEnough && data[0] == 0) {
        return data[1] == 0 ? QStringConverter::Utf32BE : QStringConverter::Utf16BE;
    }
    if (isLongEnough && data[1] == 0) {
        return data[2] == 0 ? QStringConverter::Utf32LE : QStringConverter::Utf16LE;
    }
    return QStringConverter::Utf8;
}

/// Empty when it is not in that encoding.
std::string inUTF8(QByteArrayView data, QStringConverter::Encoding encoding) {
    const bool isUTF16 = encoding == QStringConverter::Utf16LE || encoding == QStringConverter::Utf16BE;
    if (data.size() % (isUTF16 ? 2 : 4) != 0) {
        return {};
    }
    QStringDecoder decoder(encoding);
    const QString text = decoder.decode(data);
    return !decoder.hasError() && QStringView(text).isValidUtf16() ? text.toStdString() : std::string();
}

} // namespace

} // namespace Linux

namespace NS {

using namespace Linux;

std::optional<PropertyListValue>
JSONSerialization::JSONObjectWithData(const std::string& data, const std::optional<std::vector<KeyPath>>& wanted) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    std::string decoded;
    std::string_view text = data;
    if (const auto encoding = encodingOf(data); encoding != QStringConverter::Utf8) {
        decoded = inUTF8(data, encoding);
        text = decoded;
    }
    if (!QByteArrayView(text).isValidUtf8()) {
        return std::nullopt;
    }
    text.remove_prefix(text.starts_with(byteOrderMark) ? byteOrderMark.size() : 0);
    PropertyListValue value;
    if (!Reader(text).readDocument(wanted ? Selection::of(*wanted) : Selection::all(), value)) {
        return std::nullopt;
    }
    const bool isContainer = value.array() || value.dictionary();
    return isContainer ? std::optional(std::move(value)) : std::nullopt;
}

} // namespace NS
